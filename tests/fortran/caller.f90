! caller.f90: a Fortran host of the library's conversion, file-opening and profiling entry
! points, called as plain external procedures with character variables. The argument is the
! directory in which to create fortran_out.txt; the exit code is 1 when a check failed.
program caller
  implicit none
  integer, external :: tpxbasstrlocaletoutf8, tpxbasstrutf8tolocale, tpxbasstrutf8fortranopen
  external :: tpxbasprfiterbegin, tpxbasprfiterend
  character(len=8) :: latin, back
  character(len=12) :: utf8
  character(len=2) :: short
  character(len=4096) :: dir
  character(len=64) :: fdname
  character(len=:), allocatable :: path
  integer :: n, fd, unit, failures
  integer :: access, share, creation, flags, unused
  integer :: iter, phase, step, rank

  failures = 0
  call get_command_argument(1, dir)

  ! Locale (Latin-1) to UTF-8: the whole variable, its trailing blanks included.
  latin = 'caf' // char(233)
  n = tpxbasstrlocaletoutf8(latin, utf8)
  call check(n == 9, 'locale to utf-8 gives 9 bytes')
  call check(utf8(1:5) == 'caf' // char(195) // char(169), 'locale to utf-8 text')
  call check(utf8(6:12) == '', 'locale to utf-8 pads with blanks')
  short = 'zz'
  n = tpxbasstrlocaletoutf8(latin, short)
  call check(n == -2 .and. short == 'zz', 'locale to utf-8 into 2 bytes gives -2')

  ! And back: the trimmed UTF-8 text gives the 4 Latin-1 bytes, blank-padded.
  back = 'xxxxxxxx'
  n = tpxbasstrutf8tolocale(trim(utf8), back)
  call check(n == 4 .and. back == latin, 'utf-8 to locale')
  n = tpxbasstrutf8tolocale(utf8, short)
  call check(n == -2, 'utf-8 to locale into 2 bytes gives -2')
  n = tpxbasstrutf8tolocale(char(195) // '(', back)
  call check(n == -1, 'invalid utf-8 gives -1')

  ! A new file, opened for writing by the library; written through its descriptor.
  path = trim(dir) // '/fortran_out.txt'
  access = ibset(0, 30)
  share = 0
  flags = 0
  unused = 0
  creation = 1
  fd = tpxbasstrutf8fortranopen(path, access, share, unused, creation, flags, unused, unused)
  call check(fd >= 0, 'open creates the file')
  if (fd >= 0) then
    write(fdname, '(a,i0)') '/proc/self/fd/', fd
    open(newunit=unit, file=trim(fdname), action='write', status='old', position='rewind')
    write(unit, '(a)') "written through the library's descriptor"
    close(unit)
  end if
  n = tpxbasstrutf8fortranopen(path, access, share, unused, creation, flags, unused, unused)
  call check(n == -1, 'create new refuses an existing file')
  access = ibset(0, 31)
  creation = 3
  n = tpxbasstrutf8fortranopen(trim(dir) // '/' // char(195) // '(', access, share, unused, &
                               creation, flags, unused, unused)
  call check(n == -1, 'a name that is not utf-8 gives -1')

  iter = 1
  phase = 2
  step = 3
  rank = 0
  call tpxbasprfiterbegin(iter, phase, step, rank)
  call tpxbasprfiterend(iter, phase, step, rank)
  deallocate(path)

  if (failures > 0) error stop 1
  print '(a)', 'fortran caller: ok'

contains

  subroutine check(ok, what)
    logical, intent(in) :: ok
    character(len=*), intent(in) :: what
    if (.not. ok) then
      print '(2a)', 'FAILED: ', what
      failures = failures + 1
    end if
  end subroutine check

end program caller
