select from where order by
