select name from parts where name = 'BEAM' or name != "sheet 2,5"
