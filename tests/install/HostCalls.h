// A host's calls of the members that subsystems 7 and 8 leave to be written against their names:
// compiled and linked as a host builds them, against the public headers and the shared
// libraries. Needs a QApplication; answers how many of its checks failed, each one printed.
#pragma once

int hostCallFailures();
