# Script mode: writes the kldutil(1) manual page from the tool's own help texts, so that the
# page always says what the tool it ships with says.
#   TOOL     the built kldutil
#   OUTPUT   the page to write
#   DATE     the date shown in the page's header
cmake_minimum_required(VERSION 3.25)

function(help out)
  execute_process(COMMAND ${TOOL} ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE text)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "kldutil ${ARGN} failed (${rc})")
  endif()
  # roff: a backslash is written "\e"; a line may not start with "." or "'".
  string(REPLACE "\\" "\\e" text "${text}")
  string(REGEX REPLACE "(^|\n)([.'])" "\\1\\\\&\\2" text "${text}")
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

help(version --version)
string(REGEX REPLACE "^kldutil ([^\n]*)\n?$" "\\1" version "${version}")
help(main --help)
set(page ".TH KLDUTIL 1 \"${DATE}\" \"KLDTPXBasCoreUtils ${version}\" \"User Commands\"
.SH NAME
kldutil \\- the core utilities library's services on the command line
.SH SYNOPSIS
.B kldutil
.I COMMAND
[\\fIOPTION\\fR...] [\\fIARG\\fR...]
.br
.B kldutil help
.I COMMAND
.br
.B kldutil \\-\\-version
.SH DESCRIPTION
.nf
${main}.fi
.SH COMMANDS
")
foreach(command "natsort" "transcode" "dict;check" "dict;extract" "dict;merge" "dict;stats"
                "format")
  help(text help ${command})
  string(REPLACE ";" " " title "${command}")
  string(APPEND page ".SS ${title}\n.nf\n${text}.fi\n")
endforeach()
string(APPEND page ".SH EXIT STATUS
0 success, 1 bad input found, 2 usage error or a file that cannot be read.
.SH SEE ALSO
.BR kld_demo (1);
docs/kldutil.md in the library's sources.
")
file(WRITE ${OUTPUT} "${page}")
# Installed compressed, as manual pages are on Debian; -n keeps the file the same from build to
# build.
execute_process(COMMAND gzip -9 -n -f -k ${OUTPUT} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "gzip failed on ${OUTPUT}")
endif()
