// docs/troubleshooting.md has every text that an operator can see. The texts are asked of the code:
// the client's message functions over all numbers, and the literals of driver, worker and pipe
// lines.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "eip/cip/cip_error.h"
#include "lint/tree_files.h"

namespace {

/// The rows of the page's tables: lines that begin with a bar.
const std::vector<std::string>& rows() {
    static const std::vector<std::string> all = [] {
        std::vector<std::string> found;
        std::istringstream page(contentOf(kRoot / "docs/troubleshooting.md"));
        for (std::string line; std::getline(page, line);) {
            if (!line.empty() && line[0] == '|') {
                found.push_back(line);
            }
        }
        return found;
    }();
    return all;
}

/// Whether one row has both texts.
bool oneRowHas(const std::string& first, const std::string& second = std::string()) {
    for (const std::string& row : rows()) {
        if (row.find(first) != std::string::npos && row.find(second) != std::string::npos) {
            return true;
        }
    }
    return false;
}

/// What the operator sees of an error.
std::string shownText(int32_t type, int32_t number, int32_t extended) {
    CIPERROR(type, number, extended);
    return cip_err_msg();
}

/// The row of a number: what is shown, and in quotation marks what the client calls it.
void expectRow(int32_t type, int32_t number, int32_t extended) {
    const std::string shown = "`" + shownText(type, number, extended) + "`";
    const std::string meaning = '"' + std::string(CIPGetErrMsg(type, number, extended)) + '"';
    EXPECT_TRUE(oneRowHas(shown, meaning)) << "no row with " << shown << " and " << meaning;
}

/// All numbers that the tables give a text other than that for unknown ones get their own row; the
/// text for unknown ones is somewhere on the page.
void expectRows(int32_t type, int32_t first, int32_t last, const std::string& unknown,
                const std::function<void(int32_t, int32_t*, int32_t*)>& place) {
    int known = 0;
    for (int32_t code = first; code <= last; ++code) {
        int32_t number = 0;
        int32_t extended = 0;
        place(code, &number, &extended);
        if (CIPGetErrMsg(type, number, extended) != unknown) {
            expectRow(type, number, extended);
            ++known;
        }
    }
    EXPECT_GT(known, 0);
    EXPECT_TRUE(oneRowHas('"' + unknown + '"')) << unknown;
}

void isNumber(int32_t code, int32_t* number, int32_t*) {
    *number = code;
}

TEST(Troubleshooting, HasTheClientsOwnTexts) {
    std::set<std::string> texts;
    for (int32_t code = -1000; code <= 0; ++code) {
        texts.insert(shownText(CIP_ERR_INTERNAL, code, 0));
    }
    EXPECT_LT(20u, texts.size());
    for (const std::string& text : texts) {
        EXPECT_TRUE(oneRowHas("| `" + text + "` |")) << text;
    }
}

TEST(Troubleshooting, HasTheEncapsulationStatuses) {
    for (int32_t code = 0; code <= 3; ++code) {
        expectRow(CIP_ERR_EIP, code, 0);
    }
    for (const int32_t code : {100, 101, 105}) {
        expectRow(CIP_ERR_EIP, code, 0);
    }
    // Ranges have a row for their first number.
    for (const int32_t code : {4, 102, 106}) {
        expectRow(CIP_ERR_EIP, code, 0);
    }
    std::set<std::string> texts;
    for (int32_t code = -1; code <= 0x10000; ++code) {
        texts.insert(CIPGetEipErrMsg(code));
    }
    for (const std::string& text : texts) {
        EXPECT_TRUE(oneRowHas('"' + text + '"')) << text;
    }
}

TEST(Troubleshooting, HasTheGeneralStatuses) {
    for (int32_t code = 0; code <= 43; ++code) {
        if (code != 1) {
            expectRow(CIP_ERR_MR, code, 0);
        }
    }
    EXPECT_TRUE(oneRowHas("`MR error: 0001H`", "\"Connection failure\""));
    expectRow(CIP_ERR_MR, 208, 0);
    std::set<std::string> texts;
    for (int32_t code = -1; code <= 0x10000; ++code) {
        texts.insert(CIPGetMRErrMsg(code, -1));
    }
    for (const std::string& text : texts) {
        EXPECT_TRUE(oneRowHas('"' + text + '"')) << text;
    }
}

TEST(Troubleshooting, HasTheConnectionManagersStatuses) {
    expectRows(CIP_ERR_MR, 0, 0xFFFF, "Connection failure",
               [](int32_t code, int32_t* number, int32_t* extended) {
                   *number = 1;
                   *extended = code;
               });
}

TEST(Troubleshooting, HasTheLogixStatuses) {
    expectRows(CIP_ERR_AB, 0, 0x1FE, "Unknow AB Error type", isNumber);
    expectRows(CIP_ERR_AB, 0, 0xFFFF, "Unknow Extended AB Error type",
               [](int32_t code, int32_t* number, int32_t* extended) {
                   *number = 0x1FF;
                   *extended = code;
               });
}

TEST(Troubleshooting, HasLogixStatusesWithWordsBehind) {
    const int32_t oneWord = 0x0100;
    const std::string shown = shownText(CIP_ERR_AB, oneWord | 0x05, 0x2105);
    EXPECT_TRUE(oneRowHas("`" + shown + "`", "`0005H`")) << shown;
}

TEST(Troubleshooting, HasThePcccStatuses) {
    expectRows(CIP_ERR_PCCC, 0, 0xEF, "Unknow PCCC Error type", isNumber);
    expectRows(CIP_ERR_PCCC, 0, 0xFF, "Unknow PCCC Error type",
               [](int32_t code, int32_t* number, int32_t* extended) {
                   *number = 0xF0;
                   *extended = code;
               });
}

TEST(Troubleshooting, HasTheErrorsOfAConnect) {
    for (const int number :
         {ETIMEDOUT, ECONNREFUSED, EHOSTUNREACH, ENETUNREACH, ENETDOWN, ECONNRESET, EPIPE,
          EHOSTDOWN, EINVAL, EACCES, EMFILE, EADDRNOTAVAIL, 0}) {
        const std::string shown =
            "`" + std::string(strerror(number)) + '(' + std::to_string(number) + ")`";
        EXPECT_TRUE(oneRowHas(shown)) << shown;
    }
}

TEST(Troubleshooting, KnowsWhatAnUnknownKindIsCalled) {
    EXPECT_NE(std::string::npos,
              contentOf(kRoot / "docs/troubleshooting.md").find(shownText(99, 0, 0)));
}

/// Texts in the code that read like sentences: small letters with blanks between. Adjacent literals
/// are one.
std::set<std::string> sentencesIn(const std::string& code) {
    std::string lines;
    std::istringstream stream(code);
    for (std::string line; std::getline(stream, line);) {
        const size_t comment = line.find("//");
        lines += line.substr(0, comment) + '\n';
    }
    lines = std::regex_replace(lines, std::regex("\"\\s*\n\\s*\""), "");
    const std::regex sentence("\"([a-z][A-Za-z0-9']*( [A-Za-z0-9'()]+)+)\"");
    std::set<std::string> found;
    for (std::sregex_iterator match(lines.begin(), lines.end(), sentence), end; match != end;
         ++match) {
        found.insert((*match)[1]);
    }
    return found;
}

TEST(Troubleshooting, HasTheTextsOfDriverWorkerAndPipeLines) {
    std::set<std::string> texts;
    for (const char* folder : {"eip", "drivers/ab_micro800_ethernet"}) {
        for (const auto& file : std::filesystem::directory_iterator(kRoot / folder)) {
            if (file.path().extension() == ".cpp") {
                texts.merge(sentencesIn(contentOf(file.path())));
            }
        }
    }
    EXPECT_EQ(1u, texts.count("can not open database"));
    EXPECT_EQ(1u, texts.count("invalid response(internal error2)"));
    EXPECT_EQ(1u, texts.count("invalid array element"));
    for (const std::string& text : texts) {
        EXPECT_TRUE(oneRowHas("| `" + text + "` |")) << text;
    }
}

TEST(Troubleshooting, EveryRowSaysWhatToCheck) {
    for (const std::string& row : rows()) {
        EXPECT_FALSE(std::regex_search(row, std::regex("\\|\\s*\\|"))) << row;
    }
}

/// A program shows single rows (micro800 doctor): none may lean on the one above it.
TEST(Troubleshooting, EveryRowStandsAlone) {
    for (const std::string& row : rows()) {
        EXPECT_FALSE(std::regex_search(row, std::regex("[Aa]s (above|for) "))) << row;
        EXPECT_FALSE(std::regex_search(row, std::regex("As above"))) << row;
    }
}

}  // namespace
