select top 4 distinct name, number from parts order by name, number desc
