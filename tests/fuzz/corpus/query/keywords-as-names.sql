select by, [by] from [from] where by = 'by' order by by
