# -*- coding: utf-8 -*-
# French translations of the demo host's messages and of a few library reports.
# One assignment per line: d['<English format text>'] = r'<translation>'
d = {}
d['Copy %s to %s'] = r'Copier vers %2$s depuis %1$s'
d['%2$s: %1$d iterations'] = r'%2$s : %1$d itérations'
d['Residual %e after %d steps'] = r'Après %2$d pas, résidu %1$.3e'
d['Open the file\@menu'] = r'Ouvrir le fichier (menu)'
d['Exception: %s in file %s at line %d'] = r'Exception : %s dans le fichier %s à la ligne %d'
d['rgx_match: exec error: %d'] = r'rgx_match : erreur d\'exécution : %d'
d['Assertion Failure: %s'] = r'Échec d\'assertion : %s'
