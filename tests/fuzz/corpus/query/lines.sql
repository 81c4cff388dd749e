select number
from parts
where number = 1
