# objects.txt, one absolute path a line, to objects.rsp with paths relative to the build directory.
file(STRINGS ${BASE}/objects.txt objects)
list(TRANSFORM objects REPLACE "^${BASE}/" "")
list(JOIN objects "\n" lines)
file(WRITE ${BASE}/objects.rsp "${lines}\n")
