# French messages of the solver.
# Translator: keep the units in SI.

# workflow/v1/mesh.f90:4
d['Element 'quad' is not supported'] = r'Element 'quad' is not supported'

# workflow/v1/mesh.f90:3
d['Mesh has %d nodes'] = r'Mesh has %d nodes'

# workflow/v1/solver.cpp:5
# Maillage: the usual word in the manuals.
d['Reading mesh %s (%d nodes)'] = r'Lecture du maillage %s (%d nœuds)'

# workflow/v1/io.cpp:4
d['Results written to %s'] = r'Results written to %s'

# workflow/v1/io.cpp:8
# workflow/v1/solver.cpp:9
d['Solver ready'] = r'Solveur prêt'

# workflow/v1/solver.cpp:13
d['Step %d at time %g seconds'] = r'Pas %s au temps %g secondes'
