_Pragma("a\\b \\\\ \"c\\\"")
