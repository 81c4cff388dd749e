please select number from parts order parts by number
