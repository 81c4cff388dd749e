SELECT number, name, length, short, flag, [net weight], höhe FROM parts
