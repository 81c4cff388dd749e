select distinct * from parts
