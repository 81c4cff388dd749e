select number from parts where name = 'beam
