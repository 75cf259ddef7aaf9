# Messages to translate, extracted by kldutil dict extract: 2 texts.
# Each text is its own translation until it is translated.

# workflow/v1/mesh.f90:4
# workflow/v2/mesh.f90:4
d['Element 'quad' is not supported'] = r'Element 'quad' is not supported'

# workflow/v1/mesh.f90:3
# workflow/v2/mesh.f90:3
d['Mesh has %d nodes'] = r'Mesh has %d nodes'
