// The pages: links lead somewhere, each page names its reader, and no phrase of the style's left
// column comes back.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "lint/tree_files.h"

namespace {

namespace fs = std::filesystem;

/// All pages of the tree, without those in build folders.
std::vector<fs::path> pages() {
    std::vector<fs::path> found;
    for (const char* folder : {".", "docs", "apps/simulator"}) {
        for (const auto& entry : fs::directory_iterator(kRoot / folder)) {
            if (entry.path().extension() == ".md") {
                found.push_back(entry.path().lexically_normal());
            }
        }
    }
    return found;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// The page without its blocks of code.
std::vector<std::string> proseOf(const fs::path& page) {
    std::vector<std::string> prose;
    bool inBlock = false;
    for (const std::string& line : linesOf(contentOf(page))) {
        if (line.compare(0, 3, "```") == 0) {
            inBlock = !inBlock;
        } else if (!inBlock) {
            prose.push_back(line);
        }
    }
    return prose;
}

/// The name by which a link reaches a heading.
std::string anchorOf(const std::string& heading) {
    std::string anchor;
    for (const char letter : heading) {
        const auto byte = static_cast<unsigned char>(letter);
        if (letter == ' ') {
            anchor += '-';
        } else if (isalnum(byte) || letter == '-' || letter == '_') {
            anchor += static_cast<char>(tolower(byte));
        }
    }
    return anchor;
}

std::set<std::string> anchorsOf(const fs::path& page) {
    std::set<std::string> anchors;
    for (const std::string& line : proseOf(page)) {
        const size_t text = line.find_first_not_of('#');
        if (text != 0 && text != std::string::npos && line[text] == ' ') {
            anchors.insert(anchorOf(line.substr(text + 1)));
        }
    }
    return anchors;
}

/// What is wrong with a link of the page; empty when it leads somewhere.
std::string problemOf(const fs::path& page, const std::string& target) {
    if (target.find("://") != std::string::npos) {
        return std::string();
    }
    const size_t hash = target.find('#');
    const std::string file = target.substr(0, hash);
    const fs::path to = file.empty() ? page : page.parent_path() / file;
    if (!fs::exists(to)) {
        return "no such file";
    }
    if (hash != std::string::npos && anchorsOf(to).count(target.substr(hash + 1)) == 0) {
        return "no such heading";
    }
    return std::string();
}

TEST(PagesOfTheTree, LinksLeadSomewhere) {
    int links = 0;
    for (const fs::path& page : pages()) {
        const std::regex link("\\]\\(([^)\\s]+)\\)");
        for (const std::string& line : proseOf(page)) {
            for (std::sregex_iterator match(line.begin(), line.end(), link), end; match != end;
                 ++match) {
                EXPECT_EQ(problemOf(page, (*match)[1]), "") << page << ": " << (*match)[1];
                ++links;
            }
        }
    }
    EXPECT_GT(links, 50);
    EXPECT_EQ(problemOf(kRoot / "README.md", "docs/no-such-page.md"), "no such file");
    EXPECT_EQ(problemOf(kRoot / "README.md", "docs/architecture.md#no-such"), "no such heading");
    EXPECT_EQ(problemOf(kRoot / "README.md", "docs/architecture.md#sizes"), "");
}

TEST(PagesOfTheTree, TheFirstLineNamesTheReader) {
    int count = 0;
    for (const auto& entry : fs::directory_iterator(kRoot / "docs")) {
        if (entry.path().extension() == ".md") {
            const std::vector<std::string> lines = linesOf(contentOf(entry.path()));
            ASSERT_GE(lines.size(), 3u) << entry.path();
            EXPECT_EQ(lines[0].compare(0, 2, "# "), 0) << entry.path();
            EXPECT_EQ(lines[2].compare(0, 4, "For "), 0) << entry.path() << ": " << lines[2];
            ++count;
        }
    }
    EXPECT_GE(count, 14);
}

TEST(PagesOfTheTree, TheReadmeLeadsToEveryPage) {
    const std::string readme = contentOf(kRoot / "README.md");
    for (const auto& entry : fs::directory_iterator(kRoot / "docs")) {
        const std::string name = "docs/" + entry.path().filename().string();
        if (entry.path().extension() == ".md") {
            EXPECT_NE(readme.find("(" + name), std::string::npos) << name;
        }
    }
}

/// Phrases that are never plain English here. Only such as raise no false alarm.
const char* const kPhrases[] = {
    "\\bthe [a-z]+ in small\\b",
    "\\bnobody there\\b",
    "\\bis not to be had\\b",
    "\\btakes? the (process|runtime) down\\b",
    "\\b(of|in|with) one's own\\b",
    "\\bone's\\b",
    "\\b(whatever|whoever) (it|is|he|came|comes)\\b",
    "\\bWhat does not look like\\b",
    "\\b(once|twice|times|reads|requests|messages|packets) a second\\b",
    "\\bone a line\\b",
    "\\ba text stands\\b",
    "\\bstands? (in|under|there|behind|for what)\\b",
    "\\btwo voices\\b",
    "\\bbehind (it|the first one)\\b",
};

bool isForbidden(const std::string& line) {
    static const std::vector<std::regex> patterns(std::begin(kPhrases), std::end(kPhrases));
    return std::any_of(patterns.begin(), patterns.end(), [&line](const std::regex& pattern) {
        return std::regex_search(line, pattern);
    });
}

TEST(PagesOfTheTree, ArePlainEnglish) {
    EXPECT_TRUE(isForbidden("the runtime in small"));
    EXPECT_TRUE(isForbidden("it wakes 50 times a second"));
    EXPECT_FALSE(isForbidden("a call waits at most a second"));
    for (const fs::path& page : pages()) {
        // The samples of the style.
        const bool isStyle = page.filename() == "CONTRIBUTING.md";
        for (const std::string& line : proseOf(page)) {
            if (!(isStyle && line.compare(0, 2, "| ") == 0) &&
                line.find("\"one's\"") == std::string::npos) {
                EXPECT_FALSE(isForbidden(line)) << page << ": " << line;
            }
        }
    }
}

/// Texts in quotation marks after a marker in a file.
std::string after(const std::string& file, const std::string& pattern) {
    const std::string content = contentOf(kRoot / file);
    std::smatch match;
    return std::regex_search(content, match, std::regex(pattern)) ? match[1].str() : std::string();
}

/// docs/releasing.md lists where the version is.
TEST(PagesOfTheTree, TheVersionIsTheSameEverywhere) {
    const std::string version = after("CMakeLists.txt", "VERSION ([0-9.]+) LANGUAGES");
    ASSERT_NE(version, "");
    const std::vector<std::pair<const char*, std::string>> places = {
        {"drivers/ab_micro800_ethernet/identity.cpp", "VERSION_STRING = [^\"]*\"([0-9.]+)\""},
        {"eip/record/record_writer.cpp", "kApplication\\[\\] = \"[A-Za-z0-9 ]*?([0-9.]+)\";"},
        {"packaging/deb/changelog", "^micro800 \\(([0-9.]+)\\)"},
        {"CHANGELOG.md", "\n## ([0-9.]+)\n"},
        {"README.md", "Version ([0-9]+\\.[0-9]+\\.[0-9]+)\\."},
        {"docs/panel.md", "micro800_([0-9.]+)_amd64"},
    };
    const std::string page = contentOf(kRoot / "docs/releasing.md");
    for (const auto& place : places) {
        EXPECT_EQ(after(place.first, place.second), version) << place.first;
        EXPECT_NE(page.find(place.first), std::string::npos) << place.first;
    }
}

/// docs/build-sdk.md says why of every package that the scripts install.
TEST(PagesOfTheTree, EveryDependencyHasItsReason) {
    const std::string page = contentOf(kRoot / "docs/build-sdk.md");
    int count = 0;
    for (const char* list : {"build", "test", "sanitizer", "bench", "coverage"}) {
        std::istringstream packages(
            after("scripts/lib.sh", std::string("\n") + list + "_packages='([^']*)'"));
        for (std::string package; packages >> package; ++count) {
            EXPECT_NE(page.find("`" + package + "`"), std::string::npos) << package;
        }
    }
    EXPECT_GT(count, 15);
}

}  // namespace
