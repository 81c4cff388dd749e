select number from parts where ( number = 1 or not short > 2 ) and flag = true
