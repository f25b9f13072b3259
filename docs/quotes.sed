# Doxygen turns a quotation mark into an apostrophe in manual pages, which also begins a command there:
# in the texts of the headers it gets pairs that it knows, but not in their code.
/\\code/,/\\endcode/b
/\/\/\//s/"\([^"]*\)"/\&ldquo;\1\&rdquo;/g
