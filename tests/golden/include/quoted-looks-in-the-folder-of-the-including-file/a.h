in working directory
