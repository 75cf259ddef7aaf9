# A clean dictionary
d['Open file'] = r'Ouvrir le fichier'
d['Copy %s to %s'] = r'Copier vers %2$s depuis %1$s'
d['Value %5.2f'] = r'Valeur %8.3f'
d['Café %d'] = r'Café numéro %d'
