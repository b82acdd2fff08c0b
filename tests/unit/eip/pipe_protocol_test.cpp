#include "eip/pipe_protocol.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "support/hex_bytes.h"

namespace {

typedef std::function<int(char*, int)> Builder;

struct Row {
    const char* name;
    Builder build;
    std::string line;
};

_LGX_Data_Type typeCode(int code) {
    return static_cast<_LGX_Data_Type>(code);
}

QList<LgxReadCmd> session(std::initializer_list<LgxReadCmd> entries) {
    QList<LgxReadCmd> list;
    for (const LgxReadCmd& entry : entries) {
        list.append(entry);
    }
    return list;
}

/// Every kind of line, but for the session list, whose buffer rule is its own.
const std::vector<Row>& rows() {
    static const std::vector<Row> all = {
        {"session accepted",
         [](char* d, int n) { return LgxDriverPackSetSessionRsp(d, n, 0x1A2B, true); },
         "01\t1A2B\n"},
        {"session refused",
         [](char* d, int n) { return LgxDriverPackSetSessionRsp(d, n, 0x1A2B, false); },
         "81\t1A2B\n"},
        {"read", [](char* d, int n) { return LgxDriverPackReadCmd(d, n, 7, "Motor_Speed", 1); },
         "02\t0007\tMotor_Speed\t1\n"},
        {"read of an element",
         [](char* d, int n) { return LgxDriverPackReadCmd(d, n, 65535, "GRID[2,3]", 100); },
         "02\tFFFF\tGRID[2,3]\t100\n"},
        {"read, smallest count",
         [](char* d, int n) { return LgxDriverPackReadCmd(d, n, 0, "", INT_MIN); },
         "02\t0000\t\t-2147483648\n"},
        {"read, largest count",
         [](char* d, int n) { return LgxDriverPackReadCmd(d, n, 0, "A", INT_MAX); },
         "02\t0000\tA\t2147483647\n"},
        {"read, count 0", [](char* d, int n) { return LgxDriverPackReadCmd(d, n, 1, "A", 0); },
         "02\t0001\tA\t0\n"},
        {"read of a name beyond ASCII",
         [](char* d, int n) {
             return LgxDriverPackReadCmd(d, n, 1, QString(QChar(0xE4)) + QChar(0x20AC), 1);
         },
         "02\t0001\t\xE4?\t1\n"},
        {"value", [](char* d, int n) { return LgxDriverPackReadRsp(d, n, 0x1A2B, hex("0a1b")); },
         "02\t1A2B\t0a1b\n"},
        {"value of all bits",
         [](char* d, int n) { return LgxDriverPackReadRsp(d, n, 1, hex("ff00807f")); },
         "02\t0001\tff00807f\n"},
        {"empty value", [](char* d, int n) { return LgxDriverPackReadRsp(d, n, 1, QByteArray()); },
         "02\t0001\t00\n"},
        {"read failed",
         [](char* d, int n) { return LgxDriverPackReadFailRsp(d, n, 0x1A2B, "AB error: 0005H"); },
         "82\t1A2B\tAB error: 0005H\n"},
        {"read failed without a text",
         [](char* d, int n) { return LgxDriverPackReadFailRsp(d, n, 1, QString()); },
         "82\t0001\t\n"},
        {"write",
         [](char* d, int n) {
             return LgxDriverPackMicro800WriteCmd(d, n, 0xAB, "TEMP", LGX_TYPE_DINT,
                                                  hex("0a1bffc0"));
         },
         "03\t00AB\tTEMP\tC4\t0a1bffc0\n"},
        {"write, type cut to 8 bits",
         [](char* d, int n) {
             return LgxDriverPackMicro800WriteCmd(d, n, 1, "T", typeCode(0x1C4), hex("01"));
         },
         "03\t0001\tT\tC4\t01\n"},
        {"write, small type",
         [](char* d, int n) {
             return LgxDriverPackMicro800WriteCmd(d, n, 1, "T", typeCode(5), hex("01"));
         },
         "03\t0001\tT\t05\t01\n"},
        {"write of nothing",
         [](char* d, int n) {
             return LgxDriverPackMicro800WriteCmd(d, n, 1, "T", typeCode(0xDA), QByteArray());
         },
         "03\t0001\tT\tDA\t\n"},
        {"long write form",
         [](char* d, int n) {
             return LgxDriverPackCompactLogixWriteCmd(d, n, 1, "T", typeCode(0xC4), hex("0A1B"), 3,
                                                      -4);
         },
         "03\t0001\tT\tC4\t0a1b\t3\t-4\n"},
        {"long write form, whole type",
         [](char* d, int n) {
             return LgxDriverPackCompactLogixWriteCmd(d, n, 1, "T", typeCode(0x12C4), hex("01"), 0,
                                                      0);
         },
         "03\t0001\tT\t12C4\t01\t0\t0\n"},
        {"long write form, every bit of the type",
         [](char* d, int n) {
             return LgxDriverPackCompactLogixWriteCmd(d, n, 1, "T", typeCode(-1), hex("01"), 0, 0);
         },
         "03\t0001\tT\tFFFFFFFF\t01\t0\t0\n"},
        {"written", [](char* d, int n) { return LgxDriverPackWriteRsp(d, n, 0x1A2B, nullptr); },
         "03\t1A2B\n"},
        {"write failed",
         [](char* d, int n) { return LgxDriverPackWriteRsp(d, n, 0x1A2B, "invalid data size"); },
         "83\t1A2B\tinvalid data size\n"},
        {"write failed without a text",
         [](char* d, int n) { return LgxDriverPackWriteRsp(d, n, 1, ""); }, "83\t0001\t\n"},
        {"read array elements",
         [](char* d, int n) {
             return LgxDriverPackMicro800ReadArrayElementsCmd(d, n, 0x10, "ARR", "[3]",
                                                              LGX_TYPE_DINT, 2, 10, 12);
         },
         "04\t0010\tARR\t[3]\tC4\t2\t10\t12\n"},
        {"read array elements, negative numbers",
         [](char* d, int n) {
             return LgxDriverPackMicro800ReadArrayElementsCmd(d, n, 1, "ARR", "[0,1,2]",
                                                              typeCode(0), -1, -2, -3);
         },
         "04\t0001\tARR\t[0,1,2]\t00\t-1\t-2\t-3\n"},
        {"array elements",
         [](char* d, int n) { return LgxDriverPackReadArrayElementRsp(d, n, 1, hex("0102")); },
         "04\t0001\t0102\n"},
        {"no array elements",
         [](char* d, int n) { return LgxDriverPackReadArrayElementRsp(d, n, 1, QByteArray()); },
         "04\t0001\t00\n"},
        {"read of array elements failed",
         [](char* d, int n) {
             return LgxDriverPackReadArrayElementFailRsp(d, n, 1, "invalid array element");
         },
         "84\t0001\tinvalid array element\n"},
        {"address changed",
         [](char* d, int n) {
             return LgxDriverPackIpSettingChangedCmd(d, n, 0x0C, "192.168.1.20", 44818);
         },
         "05\t000C\t192.168.1.20\t44818\n"},
        {"address changed, largest port",
         [](char* d, int n) {
             return LgxDriverPackIpSettingChangedCmd(d, n, 1, "10.0.0.1", 65535);
         },
         "05\t0001\t10.0.0.1\t65535\n"},
        {"address taken",
         [](char* d, int n) { return LgxDriverPackIpSettingChangedRsp(d, n, 1, nullptr); },
         "05\t0001\n"},
        {"address refused",
         [](char* d, int n) { return LgxDriverPackIpSettingChangedRsp(d, n, 1, "no"); },
         "85\t0001\tno\n"},
        {"failure of any code",
         [](char* d, int n) { return LgxDriverPackFailRsp(d, n, 0x0F, 1, "why"); },
         "8F\t0001\twhy\n"},
        {"failure of a code that has the flag",
         [](char* d, int n) { return LgxDriverPackFailRsp(d, n, 0x82, 1, "why"); },
         "82\t0001\twhy\n"},
        {"value of any code",
         [](char* d, int n) { return LgxDriverPackReadXXXRsp(d, n, 0xFE, 1, hex("01")); },
         "FE\t0001\t01\n"},
    };
    return all;
}

TEST(PipeLines, AreBuiltByteForByte) {
    for (const Row& row : rows()) {
        char dst[256];
        const int length = row.build(dst, sizeof dst);
        ASSERT_EQ(int(row.line.size()), length) << row.name;
        EXPECT_EQ(row.line, std::string(dst, size_t(length))) << row.name;
        EXPECT_EQ('\0', dst[length]) << row.name;
    }
}

TEST(PipeLines, FitWithTheirTerminatorOrNotAtAll) {
    for (const Row& row : rows()) {
        const int needed = int(row.line.size()) + 1;
        for (int n = -1; n <= needed; ++n) {
            // Exactly as large as said, so that the address sanitizer sees a byte too many.
            std::vector<char> dst(size_t(n > 0 ? n : 0));
            const int length = row.build(dst.data(), n);
            EXPECT_EQ(n < needed ? -1 : needed - 1, length) << row.name << " in " << n;
        }
        EXPECT_EQ(-1, row.build(nullptr, INT_MIN)) << row.name;
    }
}

TEST(PipeLines, NeverHoldMoreThanTheBuffer) {
    char dst[kPipeLineSize];
    // 2 + 1 + 4 + 1, the digits, line feed and terminator.
    EXPECT_EQ(4095, LgxDriverPackReadRsp(dst, kPipeLineSize, 1, QByteArray(2043, 'x')));
    EXPECT_EQ('\n', dst[4094]);
    EXPECT_EQ('\0', dst[4095]);
    EXPECT_EQ(-1, LgxDriverPackReadRsp(dst, kPipeLineSize, 1, QByteArray(2044, 'x')));
    EXPECT_EQ(-1, LgxDriverPackReadRsp(dst, kPipeLineSize, 1, QByteArray(1 << 20, 'x')));
    EXPECT_EQ(-1, LgxDriverPackReadCmd(dst, kPipeLineSize, 1, QString(5000, 'A'), 1));
    EXPECT_EQ(-1, LgxDriverPackReadFailRsp(dst, kPipeLineSize, 1, QString(5000, 'A')));
    EXPECT_EQ(-1, LgxDriverPackWriteRsp(dst, kPipeLineSize, 1, std::string(5000, 'A').c_str()));
}

TEST(PipeLines, SessionListHasItsEntriesInOrder) {
    char dst[64];
    const int length = LgxDriverPackSetSessionCmd(dst, sizeof dst, 0x1A2B,
                                                  session({{"B", 10}, {"A[1]", 1}, {"C", -1}}));
    ASSERT_GT(length, 0);
    EXPECT_EQ("01\t1A2B\tB\t10\tA[1]\t1\tC\t-1\n", std::string(dst, size_t(length)));
}

TEST(PipeLines, SessionListMayFillTheBuffer) {
    const std::string line = "01\t0001\tA\t1\tBB\t22\n";
    const QList<LgxReadCmd> list = session({{"A", 1}, {"BB", 22}});
    for (int n = -1; n <= int(line.size()) + 2; ++n) {
        std::vector<char> dst(size_t(n > 0 ? n : 0));
        const int length = LgxDriverPackSetSessionCmd(dst.data(), n, 1, list);
        if (n < int(line.size())) {
            EXPECT_EQ(-1, length) << n;
        } else {
            ASSERT_EQ(int(line.size()), length) << n;
            EXPECT_EQ(line, std::string(dst.data(), size_t(length))) << n;
        }
    }
}

TEST(PipeLines, EmptySessionListIsNeverSent) {
    char dst[64];
    EXPECT_EQ(-1, LgxDriverPackSetSessionCmd(dst, sizeof dst, 1, QList<LgxReadCmd>()));
    EXPECT_EQ(-1, LgxDriverPackSetSessionCmd(dst, 0, 1, QList<LgxReadCmd>()));
}

TEST(PipeLines, ControlCharactersInAFieldMakeNoLine) {
    char dst[256];
    for (int c = 0; c < 0x20; ++c) {
        const QString text = QString("A") + QChar(c) + "B";
        EXPECT_EQ(-1, LgxDriverPackReadCmd(dst, sizeof dst, 1, text, 1)) << c;
        EXPECT_EQ(-1, LgxDriverPackSetSessionCmd(dst, sizeof dst, 1,
                                                 session({{"OK", 1}, {text, 1}, {"OK", 1}})))
            << c;
        EXPECT_EQ(-1, LgxDriverPackMicro800ReadArrayElementsCmd(dst, sizeof dst, 1, text, "[1]",
                                                                LGX_TYPE_DINT, 1, 1, 0))
            << c;
        EXPECT_EQ(-1, LgxDriverPackMicro800ReadArrayElementsCmd(dst, sizeof dst, 1, "A", text,
                                                                LGX_TYPE_DINT, 1, 1, 0))
            << c;
        EXPECT_EQ(-1, LgxDriverPackIpSettingChangedCmd(dst, sizeof dst, 1, text, 1)) << c;
        if (c > 0) {  // a zero ends these
            const QByteArray bytes = text.toLatin1();
            EXPECT_EQ(-1, LgxDriverPackMicro800WriteCmd(dst, sizeof dst, 1, bytes.constData(),
                                                        LGX_TYPE_DINT, hex("01")))
                << c;
            EXPECT_EQ(-1, LgxDriverPackCompactLogixWriteCmd(dst, sizeof dst, 1, bytes.constData(),
                                                            LGX_TYPE_DINT, hex("01"), 0, 0))
                << c;
        }
    }
    EXPECT_EQ(-1,
              LgxDriverPackMicro800WriteCmd(dst, sizeof dst, 1, nullptr, LGX_TYPE_DINT, hex("01")));
    EXPECT_GT(LgxDriverPackReadCmd(dst, sizeof dst, 1, QString(QChar(0x20)) + QChar(0x7F), 1), 0);
}

TEST(PipeLines, ControlCharactersInAnErrorTextBecomeBlanks) {
    char dst[256];
    QString text("x");
    QByteArray blanks("x");
    QByteArray bytes("x");
    for (int c = 0; c < 0x20; ++c) {
        text += QChar(c);
        blanks += ' ';
        bytes += char(c > 0 ? c : 0x01);
    }
    text += "\ny";
    bytes += "\ny";
    blanks += " y";
    const std::string expected = std::string("82\t0001\t") + blanks.constData() + "\n";
    int length = LgxDriverPackReadFailRsp(dst, sizeof dst, 1, text);
    EXPECT_EQ(expected, std::string(dst, size_t(length)));
    length = LgxDriverPackWriteRsp(dst, sizeof dst, 1, bytes.constData());
    EXPECT_EQ("83" + expected.substr(2), std::string(dst, size_t(length)));
}

// ---- checkers ------------------------------------------------------------------------------

const char kError2[] = "invalid response(internal error2)";
const char kError[] = "invalid response(internal error)";
const char kUntouched[] = "as it was";

struct CheckRow {
    const char* name;
    const char* text;
    bool found;
    const char* error;
};

TEST(LgxDriverCheckRsp, FindsTheAnswerAtALineStart) {
    const CheckRow table[] = {
        {"success", "05\t1A2B\n", true, kUntouched},
        {"failure", "85\t1A2B\tno such host\n", false, "no such host"},
        {"failure, text trimmed", "85\t1A2B\t no such host \n", false, "no such host"},
        {"failure without a text", "85\t1A2B\t\n", false, ""},
        {"failure without an end", "85\t1A2B\tabc", false, "abc"},
        {"failure with more lines behind", "85\t1A2B\tabc\n05\t0001\n", false, "abc\n05\t0001"},
        {"nothing", "", false, kError2},
        {"line feed alone", "\n", false, kError2},
        {"another id", "05\t1A2C\n", false, kError2},
        {"another id, failure", "85\t1A2C\tabc\n", false, kError2},
        {"another code", "03\t1A2B\n", false, kError2},
        {"success without a line feed", "05\t1A2B", false, kError2},
        {"failure cut before its text", "85\t1A2B", false, kError2},
        {"failure without the text's tab", "85\t1A2B\n", false, kError2},
        {"success with a text", "05\t1A2B\tabc\n", false, kError2},
        {"lower-case id", "05\t1a2b\n", false, kError2},
        {"second line", "05\t0001\n05\t1A2B\n", true, kUntouched},
        {"failure in the second line", "05\t0001\n85\t1A2B\tabc\n", false, "abc"},
        {"middle of a line", "x05\t1A2B\n", false, kError2},
        {"middle of a line, then a line start", "x05\t1A2B\n05\t1A2B\n", false, kError2},
        {"failure in the middle of a line", "x85\t1A2B\tabc\n", false, kError2},
        {"both, success first", "05\t1A2B\n85\t1A2B\tabc\n", true, kUntouched},
        {"both, failure first", "85\t1A2B\tabc\n05\t1A2B\n", true, kUntouched},
    };
    for (const CheckRow& row : table) {
        // No byte after the terminator, so that the address sanitizer sees a read too many.
        const std::vector<char> buf(row.text, row.text + strlen(row.text) + 1);
        QString err(kUntouched);
        EXPECT_EQ(row.found, LgxDriverCheckRsp(buf.data(), 0x05, 0x1A2B, err)) << row.name;
        EXPECT_EQ(QString(row.error), err) << row.name;
    }
}

TEST(LgxDriverCheckRsp, HasAShortFormForEachCode) {
    const struct {
        bool (*check)(const char*, unsigned short, QString&);
        const char* success;
        const char* failure;
    } table[] = {{LgxDriverCheckReadRsp, "02\t0007\n", "82\t0007\twhy\n"},
                 {LgxDriverCheckWriteRsp, "03\t0007\n", "83\t0007\twhy\n"},
                 {LgxDriverCheckIpSettingChangedRsp, "05\t0007\n", "85\t0007\twhy\n"}};
    for (const auto& row : table) {
        QString err(kUntouched);
        EXPECT_TRUE(row.check(row.success, 7, err));
        EXPECT_EQ(QString(kUntouched), err);
        EXPECT_FALSE(row.check(row.failure, 7, err));
        EXPECT_EQ(QString("why"), err);
        EXPECT_FALSE(row.check("04\t0007\n", 7, err));
        EXPECT_EQ(QString(kError2), err);
    }
}

TEST(LgxDriverCheckSetSessionRsp, TakesTheAcceptanceOnly) {
    EXPECT_TRUE(LgxDriverCheckSetSessionRsp("01\t0007\n", 7));
    EXPECT_TRUE(LgxDriverCheckSetSessionRsp("01\t0006\n01\t0007\n", 7));
    EXPECT_TRUE(LgxDriverCheckSetSessionRsp("\n01\t0007\n", 7));
    for (const char* text : {"81\t0007\n", "01\t0008\n", "01\t0007", "01\t0007\t\n", "x01\t0007\n",
                             "02\t0007\n", "", "01\t007\n", "1\t0007\n"}) {
        EXPECT_FALSE(LgxDriverCheckSetSessionRsp(text, 7)) << text;
    }
}

struct ValueRow {
    const char* name;
    const char* text;
    const char* value;  // hex
    const char* error;
};

TEST(LgxDriverReadXXXRspToByteArray, DecodesTheValue) {
    const ValueRow table[] = {
        {"value", "02\t1A2B\t0a1bff00\n", "0a1bff00", kUntouched},
        {"upper case", "02\t1A2B\t0A1BFF\n", "0a1bff", kUntouched},
        {"empty value as it is sent", "02\t1A2B\t00\n", "00", kUntouched},
        {"odd number of digits", "02\t1A2B\tabc\n", "0abc", kUntouched},
        {"one digit", "02\t1A2B\t7\n", "07", kUntouched},
        {"other characters skipped", "02\t1A2B\t0x1 2-3g4\n", "01234", kUntouched},
        {"no digit at all", "02\t1A2B\t\n", "", kUntouched},
        {"no line feed", "02\t1A2B\t1234", "1234", kUntouched},
        {"second line", "02\t0001\tff\n02\t1A2B\t12\n", "12", kUntouched},
        {"middle of a line", "x02\t1A2B\t12\n", "", kError},
        {"failure", "82\t1A2B\t the text \n", "", "the text"},
        {"failure in the second line", "02\t0001\tff\n82\t1A2B\tabc\n", "", "abc"},
        {"another id", "02\t1A2C\t12\n", "", kError},
        {"another code", "04\t1A2B\t12\n", "", kError},
        {"no value field", "02\t1A2B\n", "", kError},
        {"cut", "02\t1A2B", "", kError},
        {"nothing", "", "", kError},
    };
    for (const ValueRow& row : table) {
        const std::vector<char> buf(row.text, row.text + strlen(row.text) + 1);
        QString err(kUntouched);
        EXPECT_EQ(hex(row.value), LgxDriverReadXXXRspToByteArray(buf.data(), 0x02, 0x1A2B, err))
            << row.name;
        EXPECT_EQ(QString(row.error), err) << row.name;
    }
}

TEST(LgxDriverReadXXXRspToByteArray, HasAShortFormForEachCode) {
    QString err(kUntouched);
    EXPECT_EQ(hex("01"), LgxDriverReadRspToByteArray("02\t0007\t01\n", 7, err));
    EXPECT_EQ(hex("02"), LgxDriverReadArrayElementRspToByteArray("04\t0007\t02\n", 7, err));
    EXPECT_EQ(QString(kUntouched), err);
    EXPECT_EQ(QByteArray(), LgxDriverReadRspToByteArray("04\t0007\t02\n", 7, err));
    EXPECT_EQ(QString(kError), err);
    EXPECT_EQ(QByteArray(), LgxDriverReadArrayElementRspToByteArray("84\t0007\twhy\n", 7, err));
    EXPECT_EQ(QString("why"), err);
}

TEST(PipeLines, ComeBackAsTheyWent) {
    char dst[kPipeLineSize];
    QByteArray all;
    for (int byte = 0; byte < 256; ++byte) {
        all += char(byte);
    }
    QString err(kUntouched);
    ASSERT_GT(LgxDriverPackReadRsp(dst, sizeof dst, 0xBEEF, all), 0);
    EXPECT_EQ(all, LgxDriverReadRspToByteArray(dst, 0xBEEF, err));
    ASSERT_GT(LgxDriverPackReadArrayElementRsp(dst, sizeof dst, 0xBEEF, all), 0);
    EXPECT_EQ(all, LgxDriverReadArrayElementRspToByteArray(dst, 0xBEEF, err));
    EXPECT_EQ(QString(kUntouched), err);
    ASSERT_GT(LgxDriverPackReadFailRsp(dst, sizeof dst, 0x1A2B, " two words "), 0);
    EXPECT_EQ(QByteArray(), LgxDriverReadRspToByteArray(dst, 0x1A2B, err));
    EXPECT_EQ(QString("two words"), err);
    const QString umlaut = QString("gest") + QChar(0xF6) + "rt";
    ASSERT_GT(LgxDriverPackWriteRsp(dst, sizeof dst, 1, umlaut.toLatin1().constData()), 0);
    EXPECT_FALSE(LgxDriverCheckWriteRsp(dst, 1, err));
    EXPECT_EQ(umlaut, err);
}

TEST(LgxReadCmd, IsEmptyAtFirstAndCanBeCopied) {
    LgxReadCmd empty;
    EXPECT_TRUE(empty.name.isEmpty());
    EXPECT_EQ(0, empty.count);
    LgxReadCmd one("A", 3);
    LgxReadCmd copy(one);
    one = empty;
    EXPECT_EQ(QString("A"), copy.name);
    EXPECT_EQ(3, copy.count);
    EXPECT_EQ(0, one.count);
}

}  // namespace
