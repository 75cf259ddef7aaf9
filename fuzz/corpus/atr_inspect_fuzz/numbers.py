d['%2$s %s %d'] = r'%1$d %s %$s'
d['a\@b %s'] = r'x'
