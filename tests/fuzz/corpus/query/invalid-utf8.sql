select name from parts where name = 'ÿÃ(í €ô€€'
