[from]
