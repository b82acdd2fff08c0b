# Writes OUTPUT, a C++ source, from the text in INPUT: see EmbedText.cmake.
file(READ "${INPUT}" text)
file(WRITE "${OUTPUT}" "extern const char ${NAME}[];\nconst char ${NAME}[] = R\"page(${text})page\";\n")
