# Overlong forms: read as the characters they spell
d['Path %s'] = r'Chemin À¯ %s'
d['Cut À€ here'] = r'Coupe ici'
d['Wide %d'] = r'Large à€© %d'
d['Plain'] = r'Simple'
