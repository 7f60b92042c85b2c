h
i
