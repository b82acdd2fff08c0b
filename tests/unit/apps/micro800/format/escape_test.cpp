#include "apps/micro800/format/escape.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QRegularExpression>

#include "unit/apps/micro800/qt_printers.h"

namespace {

/// One character a byte, all 256 of them.
QString everyByte() {
    QString text;
    for (int code = 0; code < 256; ++code) {
        text += QChar(code);
    }
    return text;
}

/// What a terminal obeys, turns round or takes for another line.
bool obeysNothing(const QString& text) {
    static const QRegularExpression harmful(QStringLiteral(
        "[\\x{00}-\\x{1f}\\x{7f}-\\x{9f}\\x{ad}\\x{200b}-\\x{200f}\\x{2028}-\\x{202e}"
        "\\x{2060}-\\x{206f}\\x{feff}]"));
    return !harmful.match(text).hasMatch();
}

/// Takes \" \\ \n \r \t and \xNN back.
QString unescaped(const QString& text) {
    QString result;
    for (int i = 0; i < text.size(); ++i) {
        if (text.at(i) != '\\') {
            result += text.at(i);
            continue;
        }
        const QChar kind = text.at(++i);
        if (kind == 'x') {
            result += QChar(text.mid(i + 1, 2).toInt(nullptr, 16));
            i += 2;
        } else {
            result += kind == 'n'   ? QChar('\n')
                      : kind == 'r' ? QChar('\r')
                      : kind == 't' ? QChar('\t')
                                    : kind;
        }
    }
    return result;
}

TEST(TerminalText, ShowsWhatATerminalWouldObey) {
    EXPECT_EQ(terminalText(QString("\x1b]0;x\x07")), QString("\\x1b]0;x\\x07"));
    EXPECT_EQ(terminalText(QString(QChar(0x9b)) + "31m"), QString("\\x9b31m"));
    EXPECT_EQ(terminalText("a\nb\rc\td"), QString("a\\nb\\rc\\td"));
    EXPECT_EQ(terminalText(QString::fromLatin1("AB\0CD", 5)), QString("AB\\x00CD"));
    EXPECT_EQ(terminalText(QString(QChar(0x202e)) + "cod.exe"), QString("\\u202ecod.exe"));
    EXPECT_EQ(terminalText(QString(QChar(0xd800)) + "x"), QString("\\ud800x"));
    const uint tag[] = {0xe0041};
    EXPECT_EQ(terminalText(QString::fromUcs4(tag, 1)), QString("\\U000e0041"));
}

TEST(TerminalText, LeavesWhatCanBeRead) {
    const QString text =
        QString::fromUtf8("C:\\x \"gr\xc3\xbcn\" \xe6\xb8\xa9\xe5\xba\xa6 \xf0\x9f\x94\xa5");
    EXPECT_EQ(terminalText(text), text);
}

TEST(TerminalText, NoByteReachesTheTerminalRaw) {
    EXPECT_TRUE(obeysNothing(terminalText(everyByte())));
    EXPECT_FALSE(obeysNothing(everyByte()));
}

TEST(QuotedText, GivesEveryByteBack) {
    for (int code = 0; code < 256; ++code) {
        const QString text = QString("<") + QChar(code) + "0>";
        const QString quoted = quotedText(text);
        ASSERT_TRUE(quoted.startsWith('"') && quoted.endsWith('"')) << code;
        EXPECT_TRUE(obeysNothing(quoted)) << code;
        EXPECT_EQ(unescaped(quoted.mid(1, quoted.size() - 2)), text) << code;
    }
    EXPECT_EQ(quotedText("say \"no\" to C:\\x"), QString("\"say \\\"no\\\" to C:\\\\x\""));
}

TEST(JsonText, GivesEveryByteBackOnOneHarmlessLine) {
    const QString all = everyByte();
    const QByteArray json = jsonText({{"value", all}, {all, 1}});
    EXPECT_TRUE(obeysNothing(QString::fromUtf8(json))) << json.constData();
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    EXPECT_EQ(object.value("value").toString(), all);
    EXPECT_EQ(object.value(all).toInt(), 1);
}

TEST(JsonText, WritesTheEscapesThatJsonKnows) {
    EXPECT_EQ(jsonText({{"a", QString::fromLatin1("AB\0CD", 5)}}),
              QByteArray("{\"a\":\"AB\\u0000CD\"}"));
    EXPECT_EQ(jsonText({{"a", QString(QChar(0x7f)) + QChar(0x9b)}}),
              QByteArray("{\"a\":\"\\u007f\\u009b\"}"));
    EXPECT_EQ(jsonText({{"a", QString::fromUtf8("gr\xc3\xbcn")}}),
              QByteArray("{\"a\":\"gr\xc3\xbcn\"}"));
    const uint tag[] = {0xe0041};
    const QByteArray beyond = jsonText({{"a", QString::fromUcs4(tag, 1)}});
    EXPECT_EQ(beyond, QByteArray("{\"a\":\"\\udb40\\udc41\"}"));
    EXPECT_EQ(QJsonDocument::fromJson(beyond).object().value("a").toString(),
              QString::fromUcs4(tag, 1));
}

struct Field {
    const char* text;
    const char* field;
};

TEST(CsvField, QuotesWhatWouldEndItAndMarksWhatWouldBeComputed) {
    const Field fields[] = {
        {"", ""},
        {"Mixer 3", "Mixer 3"},
        {"a,b", "\"a,b\""},
        {"a;b", "\"a;b\""},
        {"say \"no\"", "\"say \"\"no\"\"\""},
        {" a", "\" a\""},
        {"a\nb", "a\\nb"},
        {"C:\\n", "C:\\\\n"},
        {"=1+1", "'=1+1"},
        {"=HYPERLINK(\"x\",1)", "\"'=HYPERLINK(\"\"x\"\",1)\""},
        {"+1", "'+1"},
        {"-1", "'-1"},
        {"@x", "'@x"},
        {"'x", "''x"},
    };
    for (const Field& row : fields) {
        EXPECT_EQ(csvField(row.text), QString(row.field)) << row.text;
    }
}

TEST(CsvField, GivesEveryByteBack) {
    for (int code = 0; code < 256; ++code) {
        const QString text = QChar(code) + QString("0");
        QString field = csvField(text);
        EXPECT_TRUE(obeysNothing(field)) << code;
        if (field.startsWith('"')) {
            field = field.mid(1, field.size() - 2).replace("\"\"", "\"");
        }
        if (field.startsWith('\'')) {
            field.remove(0, 1);
        }
        EXPECT_EQ(unescaped(field), text) << code;
    }
}

TEST(HtmlText, LeavesNoMarkup) {
    EXPECT_EQ(htmlText("<a href='x'>\"&amp;"),
              QString("&lt;a href=&#39;x&#39;&gt;&quot;&amp;amp;"));
    const QString all = htmlText(everyByte());
    EXPECT_TRUE(obeysNothing(all));
    EXPECT_FALSE(all.contains(QRegularExpression("[<>\"']|&(?!(lt|gt|amp|quot|#39);)")));
}

TEST(PrometheusText, EndsNoLabel) {
    EXPECT_EQ(prometheusText("say \"no\"\nC:\\x"), QString("say \\\"no\\\"\\\\nC:\\\\x"));
    const QString all = prometheusText(everyByte());
    EXPECT_TRUE(obeysNothing(all));
    // Every quote and every backslash is one of a pair.
    EXPECT_FALSE(QString(all)
                     .remove(QRegularExpression("\\\\[\\\\\"]"))
                     .contains(QRegularExpression("[\\\\\"]")));
}

}  // namespace
