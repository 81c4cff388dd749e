parts
