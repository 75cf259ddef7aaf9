subroutine report_mesh(nodes)
  integer, intent(in) :: nodes
  call solver_message('Mesh has %d nodes', nodes)
  call solver_message('Element ''quad'' is &
       &not supported', 0)
end subroutine report_mesh
