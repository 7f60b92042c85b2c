#error"text"
