select name, number from few where number = 0 order by [number]
