select name from parts where 1 < number
