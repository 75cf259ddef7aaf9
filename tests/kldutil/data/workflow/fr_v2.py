# French messages of the solver.
# Translator: keep the units in SI.

# workflow/v2/solver.cpp:15
# new
d['Converged after %d iterations'] = r'Converged after %d iterations'

# workflow/v2/mesh.f90:4
# new
d['Element 'quad' is not supported'] = r'Element 'quad' is not supported'

# workflow/v2/mesh.f90:3
# new
d['Mesh has %d nodes'] = r'Mesh has %d nodes'

# workflow/v2/solver.cpp:5
# Maillage: the usual word in the manuals.
d['Reading mesh %s (%d nodes)'] = r'Lecture du maillage %s (%d nœuds)'

# workflow/v2/io.cpp:4
# new
d['Results written to %s (%d bytes)'] = r'Results written to %s (%d bytes)'

# workflow/v2/solver.cpp:9
# check: argument 1 is "%d" in the key but "%s" in the translation
d['Step %d at time %g seconds'] = r'Pas %s au temps %g secondes'

#~ d['Results written to %s'] =r'Results written to %s'

#~ d['Solver ready'] =r'Solveur prêt'
