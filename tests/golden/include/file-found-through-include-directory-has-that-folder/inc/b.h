b of inc
