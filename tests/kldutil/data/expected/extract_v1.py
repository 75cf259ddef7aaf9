# Messages to translate, extracted by kldutil dict extract: 6 texts.
# Each text is its own translation until it is translated.

# workflow/v1/mesh.f90:4
d['Element 'quad' is not supported'] = r'Element 'quad' is not supported'

# workflow/v1/mesh.f90:3
d['Mesh has %d nodes'] = r'Mesh has %d nodes'

# workflow/v1/solver.cpp:5
d['Reading mesh %s (%d nodes)'] = r'Reading mesh %s (%d nodes)'

# workflow/v1/io.cpp:4
d['Results written to %s'] = r'Results written to %s'

# workflow/v1/io.cpp:8
# workflow/v1/solver.cpp:9
d['Solver ready'] = r'Solver ready'

# workflow/v1/solver.cpp:13
d['Step %d at time %g seconds'] = r'Step %d at time %g seconds'
