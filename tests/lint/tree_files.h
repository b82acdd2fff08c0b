#ifndef TESTS_LINT_TREE_FILES_H
#define TESTS_LINT_TREE_FILES_H

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

// The tree's own files, for tests that compare its pages with its code.

const std::filesystem::path kRoot = PROJECT_ROOT;

inline std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

#endif
