select * from parts
