// Nothing but the headers that the test programs have in common (see CMakeLists.txt).
