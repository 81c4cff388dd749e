select name from parts where name = ﾑbeamﾑ
