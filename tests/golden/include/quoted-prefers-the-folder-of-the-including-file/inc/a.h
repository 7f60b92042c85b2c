in inc
