select * from fewer where name > 'a'
