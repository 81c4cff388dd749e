select number from parts, [from], both where number = 1
