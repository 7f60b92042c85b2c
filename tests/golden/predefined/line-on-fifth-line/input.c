



__LINE__
