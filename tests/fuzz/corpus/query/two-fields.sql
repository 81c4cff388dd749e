select name from parts where length < höhe
