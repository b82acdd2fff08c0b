// docs/cip-client.md shows the example as it is compiled, and names nothing that is not there.

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>

#include "lint/tree_files.h"

namespace {

std::string page() {
    return contentOf(kRoot / "docs/cip-client.md");
}

/// The product's headers and the example, one text.
std::string code() {
    std::string all = contentOf(kRoot / "docs/examples/read_tag.cpp");
    for (const auto& entry : std::filesystem::recursive_directory_iterator(kRoot / "eip")) {
        if (entry.path().extension() == ".h") {
            all += contentOf(entry.path());
        }
    }
    return all;
}

std::set<std::string> found(const std::string& text, const char* pattern) {
    const std::regex expression(pattern);
    std::set<std::string> matches;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
         ++match) {
        matches.insert((*match)[1]);
    }
    return matches;
}

TEST(CipClientPage, ShowsTheExampleAsItIsBuilt) {
    const std::string example = contentOf(kRoot / "docs/examples/read_tag.cpp");
    ASSERT_NE(std::string(), example);
    EXPECT_NE(std::string::npos, page().find("```cpp\n" + example + "```\n"))
        << "docs/cip-client.md shows another text than docs/examples/read_tag.cpp";
}

TEST(CipClientPage, NamesOnlyWhatIsThere) {
    std::set<std::string> words = found(code(), "\\b([A-Za-z_][A-Za-z0-9_]*)\\b");
    words.insert(
        {"cip", "common", "eip", "errno", "free", "malloc", "pkgconfig", "PKG_CONFIG_PATH"});
    const std::set<std::string> named = found(page(), "`([A-Za-z_][A-Za-z0-9_]*)(?:\\(\\))?`");
    EXPECT_GT(named.size(), 30u);
    for (const std::string& name : named) {
        EXPECT_EQ(1u, words.count(name)) << name;
    }
    const std::set<std::string> headers = found(page(), "\\b(eip/[a-z_/]+\\.h)\\b");
    EXPECT_GT(headers.size(), 3u);
    for (const std::string& header : headers) {
        EXPECT_TRUE(std::filesystem::exists(kRoot / header)) << header;
    }
}

TEST(CipClientPage, IsFoundFromTheReadme) {
    EXPECT_NE(std::string::npos, contentOf(kRoot / "README.md").find("(docs/cip-client.md)"));
}

}  // namespace
