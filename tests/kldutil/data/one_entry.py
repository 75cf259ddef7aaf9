d['Open file'] = r'Ouvrir le fichier'
