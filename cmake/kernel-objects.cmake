# objects.txt, one absolute path a line, to objects.rsp with paths relative to the build directory.
file(STRINGS ${BASE}/objects.txt objects)
string(REPLACE "${BASE}/" "" objects "${objects}")
list(JOIN objects "\n" lines)
file(WRITE ${BASE}/objects.rsp "${lines}\n")
