# Messages to translate, extracted by kldutil dict extract: 6 texts.
# Each text is its own translation until it is translated.

# workflow/v2/solver.cpp:15
d['Converged after %d iterations'] = r'Converged after %d iterations'

# workflow/v2/mesh.f90:4
d['Element 'quad' is not supported'] = r'Element 'quad' is not supported'

# workflow/v2/mesh.f90:3
d['Mesh has %d nodes'] = r'Mesh has %d nodes'

# workflow/v2/solver.cpp:5
d['Reading mesh %s (%d nodes)'] = r'Reading mesh %s (%d nodes)'

# workflow/v2/io.cpp:4
d['Results written to %s (%d bytes)'] = r'Results written to %s (%d bytes)'

# workflow/v2/solver.cpp:9
d['Step %d at time %g seconds'] = r'Step %d at time %g seconds'
