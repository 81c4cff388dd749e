select number from parts where number >
