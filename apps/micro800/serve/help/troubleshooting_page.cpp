#include "apps/micro800/serve/help/troubleshooting_page.h"

#include <QRegularExpression>
#include <QSet>
#include <QStringList>

#include "apps/micro800/format/escape.h"

// Made from docs/troubleshooting.md when the program is built.
extern const char kTroubleshootingPage[];

namespace {

const char kHead[] =
    "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
    "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
    "<title>Troubleshooting</title>\n<link rel=\"icon\" href=\"data:,\">\n"
    "<link rel=\"stylesheet\" href=\"/app.css\">\n"
    "</head>\n<body>\n<main class=\"document\">\n<p><a href=\"/\">Back to the live page</a></p>\n";
const char kFoot[] = "</main>\n</body>\n</html>\n";

/// Only within this page: the other documents are not served.
QString link(const QString& text, const QString& target) {
    if (!target.startsWith(QLatin1Char('#'))) {
        return htmlText(text);
    }
    return QStringLiteral("<a href=\"%1\">%2</a>").arg(htmlText(target), htmlText(text));
}

/// Text outside of backquotes.
QString plainHtml(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral(R"(\[([^\]]*)\]\(([^)]*)\))"));
    QString html;
    int at = 0;
    auto matches = pattern.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        html += htmlText(text.mid(at, match.capturedStart() - at));
        html += link(match.captured(1), match.captured(2));
        at = match.capturedEnd();
    }
    return html + htmlText(text.mid(at));
}

QString inlineHtml(const QString& text) {
    const QStringList parts = text.split(QLatin1Char('`'));
    QString html;
    for (int i = 0; i < parts.size(); ++i) {
        const bool isCode = i % 2 == 1;
        html += isCode ? QLatin1String("<code>") + htmlText(parts.at(i)) + QLatin1String("</code>")
                       : plainHtml(parts.at(i));
    }
    return html;
}

/// Builds the page line by line.
class Page {
 public:
    void take(const QString& line);
    QByteArray end() {
        enter(Block::kNone);
        return kHead + html.toUtf8() + kFoot;
    }

 private:
    enum class Block { kNone, kParagraph, kList, kTable, kCode };

    void enter(Block next);
    void takeHeading(const QString& line);
    void takeRow(const QString& line);
    QString freeAnchor(const QString& text);

    QString html;
    Block block = Block::kNone;
    bool isFirstRow = false;
    QSet<QString> anchors;
};

void Page::enter(Block next) {
    static const char* const starts[] = {"", "<p>", "<ul>\n", "<div class=\"table\"><table>\n",
                                         "<pre>"};
    static const char* const ends[] = {"", "</p>\n", "</ul>\n", "</table></div>\n", "</pre>\n"};
    if (block != next) {
        html += QLatin1String(ends[static_cast<int>(block)]);
        html += QLatin1String(starts[static_cast<int>(next)]);
        isFirstRow = next == Block::kTable;
        block = next;
    }
}

/// Each anchor once, or the page would not be valid.
QString Page::freeAnchor(const QString& text) {
    const QString anchor = anchorOf(text);
    if (anchor.isEmpty() || anchors.contains(anchor)) {
        return QString();
    }
    anchors.insert(anchor);
    return anchor;
}

void Page::takeHeading(const QString& line) {
    enter(Block::kNone);
    const int level = qMin(line.indexOf(QLatin1Char(' ')), 6);
    const QString text = line.mid(level).trimmed();
    const QString anchor = freeAnchor(text);
    html += QStringLiteral("<h%1 id=\"%2\">%3</h%1>\n")
                .arg(QString::number(level), htmlText(anchor), inlineHtml(text));
}

void Page::takeRow(const QString& line) {
    static const QRegularExpression rule(QStringLiteral(R"(\A[|:\- ]+\z)"));
    enter(Block::kTable);
    if (rule.match(line).hasMatch()) {
        return;
    }
    QStringList cells = line.split(QLatin1Char('|')).mid(1);
    cells.removeLast();
    const QString tag = isFirstRow ? QStringLiteral("th") : QStringLiteral("td");
    html += QLatin1String("<tr>");
    for (int i = 0; i < cells.size(); ++i) {
        QString marks;
        const QStringList parts = cells.at(i).split(QLatin1Char('`'));
        for (int part = 1; i == 0 && !isFirstRow && part < parts.size(); part += 2) {
            const QString anchor = freeAnchor(parts.at(part));
            marks += anchor.isEmpty() ? QString()
                                      : QStringLiteral("<span id=\"%1\"></span>").arg(anchor);
        }
        html += QStringLiteral("<%1>%2%3</%1>").arg(tag, marks, inlineHtml(cells.at(i).trimmed()));
    }
    html += QLatin1String("</tr>\n");
    isFirstRow = false;
}

void Page::take(const QString& line) {
    const bool isFence = line.startsWith(QLatin1String("```"));
    if (block == Block::kCode || isFence) {
        if (isFence) {
            enter(block == Block::kCode ? Block::kNone : Block::kCode);
        } else {
            html += htmlText(line) + QLatin1Char('\n');
        }
    } else if (line.trimmed().isEmpty()) {
        enter(Block::kNone);
    } else if (line.startsWith(QLatin1Char('#'))) {
        takeHeading(line);
    } else if (line.startsWith(QLatin1Char('|'))) {
        takeRow(line);
    } else if (line.startsWith(QLatin1String("- "))) {
        enter(Block::kList);
        html += QLatin1String("<li>") + inlineHtml(line.mid(2));
    } else {
        if (block != Block::kList) {
            enter(Block::kParagraph);
        }
        html += inlineHtml(line.trimmed()) + QLatin1Char('\n');
    }
}

}  // namespace

QString anchorOf(const QString& text) {
    static const QRegularExpression others(QStringLiteral("[^a-z0-9]+"));
    QString anchor = text.toLower().replace(others, QStringLiteral("-"));
    while (anchor.startsWith(QLatin1Char('-'))) {
        anchor.remove(0, 1);
    }
    while (anchor.endsWith(QLatin1Char('-'))) {
        anchor.chop(1);
    }
    return anchor;
}

QByteArray htmlPage(const QString& markdown) {
    Page page;
    for (const QString& line : markdown.split(QLatin1Char('\n'))) {
        page.take(line);
    }
    return page.end();
}

const QByteArray& troubleshootingPage() {
    static const QByteArray page = htmlPage(QString::fromUtf8(kTroubleshootingPage));
    return page;
}
