#error e
