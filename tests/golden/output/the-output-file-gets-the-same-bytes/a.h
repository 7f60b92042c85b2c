h
