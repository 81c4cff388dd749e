select number, name from parts where number >= 1 and length < 0,5
