#include "support/app_directory/app_directory.h"

int main(int argc, char** argv) {
    return runTestsInOwnAppDirectory(argc, argv);
}
