select * from parts order by höhe, length, number desc
