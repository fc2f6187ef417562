// The host calls of HostCalls.cpp as a test of the build tree: the same source that
// scripts/check-install builds against an installed prefix.
#include <QApplication>

#include "HostCalls.h"

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    return hostCallFailures() == 0 ? 0 : 1;
}
