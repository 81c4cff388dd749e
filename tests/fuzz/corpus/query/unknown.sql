select what from nowhere where why = 1 order by when
