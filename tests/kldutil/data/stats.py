# a translator's file
d['Open'] = r'Ouvrir'
d['Close'] = r'Close'
d['Blank'] = r''
#~ d['Gone'] =r'Parti'
