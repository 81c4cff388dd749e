select number from parts where number>=1 and short<>2 and(flag=1)
