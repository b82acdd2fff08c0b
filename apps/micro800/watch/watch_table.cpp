// The watch as a table in the terminal, drawn by ncurses.

#include "apps/micro800/watch/watch_view.h"

#ifdef MICRO800_HAVE_CURSES

#include <poll.h>
#include <unistd.h>

#include <QDateTime>
#include <algorithm>

#include "apps/micro800/format/escape.h"

// Last: their macros must not meet the headers above.
#define NCURSES_NOMACROS
#include <curses.h>
#include <term.h>

namespace {

const qint64 kMarkMs = 1000;  // how long a change stays marked
const int kMarkWidth = 2;
const int kAgeWidth = 10;
const int kWidestAddress = 40;
const short kErrorColours = 1;

/// "0.4 s", "12 s", "3 min", "2 h"; at most 8 characters.
QString ageText(qint64 ms) {
    if (ms < 10000) {
        return QString::number(static_cast<double>(ms) / 1000.0, 'f', 1) + QLatin1String(" s");
    }
    if (ms < 600000) {
        return QString::number(ms / 1000) + QLatin1String(" s");
    }
    if (ms < 36000000) {
        return QString::number(ms / 60000) + QLatin1String(" min");
    }
    return QString::number(ms / 3600000) + QLatin1String(" h");
}

/// At most `width` characters; a cut shows, so that half a number is not taken for a number.
QString fitted(const QString& text, int width) {
    if (text.size() <= width) {
        return text;
    }
    return width > 0 ? text.left(width - 1) + QLatin1Char('~') : QString();
}

class TableView : public WatchView {
 public:
    TableView(Console& output, const QString& heading, SCREEN* opened, NumberBase numberBase)
        : console(output), title(heading), screen(opened), base(numberBase) {
        cbreak();
        noecho();
        curs_set(0);
        nodelay(stdscr, TRUE);
        keypad(stdscr, TRUE);
        colours = !qEnvironmentVariableIsSet("NO_COLOR") && has_colors() && start_color() == OK &&
                  use_default_colors() == OK && init_pair(kErrorColours, COLOR_RED, -1) == OK;
    }
    ~TableView() override { leave(); }

    void tell(const WatchedTag&, WatchEvent) override {}

    void refresh(const WatchModel& model, qint64 now) override {
        erase();
        const int rows = std::max(LINES - kHeadLines - kFootLines, 1);
        first = std::max(0, std::min(first, model.size() - rows));
        // All addresses count, also those without a value yet: the columns do not move while
        // values arrive.
        for (int i = 0; i < model.size(); ++i) {
            addressWidth =
                std::max(addressWidth, std::min(model.tag(i).address.text.size(), kWidestAddress));
        }
        drawHead();
        for (int i = 0; i < rows && first + i < model.size(); ++i) {
            drawTag(kHeadLines + i, model.tag(first + i), now);
        }
        drawFoot(model, rows, now);
        ::refresh();
    }

    void end(const WatchModel& model, qint64 now) override {
        leave();
        for (int i = 0; i < model.size(); ++i) {
            const WatchedTag& tag = model.tag(i);
            if (tag.isGood()) {
                console.line(tag.address.text + QLatin1String(" = ") + tag.text(base));
            } else if (!tag.error.isEmpty()) {
                console.error(tag.error);
            }
        }
        console.line(model.summary(now));
    }

    int keyDescriptor() const override { return isatty(STDIN_FILENO) ? STDIN_FILENO : -1; }

    bool takeKeys() override {
        for (int key = getch(); key != ERR; key = getch()) {
            if (key == 'q' || key == 'Q') {
                return true;
            }
            if (key == KEY_DOWN || key == KEY_NPAGE) {
                first += key == KEY_DOWN ? 1 : LINES / 2;
            }
            if (key == KEY_UP || key == KEY_PPAGE) {
                first -= key == KEY_UP ? 1 : LINES / 2;
            }
        }
        return isGone();
    }

 private:
    /// Whether nobody sees or types anything any more, as after a hang-up that this process
    /// ignores.
    bool isGone() {
        struct pollfd terminal = {STDOUT_FILENO, 0, 0};
        if (poll(&terminal, 1, 0) != 1) {
            return false;
        }
        console.lose();
        return true;
    }

    static constexpr int kHeadLines = 2;
    static constexpr int kFootLines = 3;

    /// Gives the terminal back; once.
    void leave() {
        if (!screen) {
            return;
        }
        endwin();
        delscreen(screen);
        screen = nullptr;
    }

    void put(int row, int column, const QString& text, attr_t attributes = A_NORMAL) {
        if (row >= LINES || column >= COLS) {
            return;
        }
        attr_t before = 0;
        short pair = 0;
        attr_get(&before, &pair, nullptr);
        attron(static_cast<int>(attributes));
        // One short of the edge: the last cell of the screen would scroll it.
        mvaddstr(row, column, fitted(terminalText(text), COLS - column - 1).toUtf8().constData());
        attr_set(before, pair, nullptr);
    }

    attr_t errorAttributes() const {
        return colours ? A_BOLD | static_cast<attr_t>(COLOR_PAIR(kErrorColours)) : A_BOLD;
    }

    int valueColumn() const { return kMarkWidth + addressWidth + 2; }
    int valueWidth() const { return std::max(COLS - valueColumn() - 2 * kAgeWidth - 1, 8); }

    void drawHead() {
        const QString time = QDateTime::currentDateTime().toString(QStringLiteral("HH:mm:ss"));
        put(0, 0, title, A_BOLD);
        put(0, std::max(COLS - time.size() - 1, 0), time);
        put(1, kMarkWidth, QStringLiteral("ADDRESS"), A_UNDERLINE);
        put(1, valueColumn(), QStringLiteral("VALUE"), A_UNDERLINE);
        put(1, valueColumn() + valueWidth(), QStringLiteral("CHANGED"), A_UNDERLINE);
        put(1, valueColumn() + valueWidth() + kAgeWidth, QStringLiteral("AGE"), A_UNDERLINE);
    }

    void drawTag(int row, const WatchedTag& tag, qint64 now) {
        const bool failed = !tag.error.isEmpty();
        const bool marked = tag.changes > 0 && now - tag.changedAt < kMarkMs;
        if (failed) {
            put(row, 0, QStringLiteral("!"), errorAttributes());
        } else if (marked) {
            put(row, 0, QStringLiteral("*"), A_BOLD);
        }
        put(row, kMarkWidth, fitted(tag.address.text, addressWidth));
        const attr_t emphasis = failed ? errorAttributes() : marked ? A_BOLD | A_REVERSE : A_NORMAL;
        // An old value is not shown as if it were the controller's: a failed read shows its error.
        const QString value = failed ? tag.error : tag.text(base);
        put(row, valueColumn(), fitted(value, valueWidth() - 2), emphasis);
        if (!tag.hasValue()) {
            return;
        }
        const int ages = valueColumn() + valueWidth();
        put(row, ages, ageText(now - tag.changedAt));
        put(row, ages + kAgeWidth, ageText(now - tag.readAt));
    }

    void drawFoot(const WatchModel& model, int rows, qint64 now) {
        const auto rate = [](double perSecond) { return QString::number(perSecond, 'f', 1); };
        const int foot = LINES - kFootLines;
        put(foot, 0,
            QStringLiteral("reads/s: cache %1, controller %2   changes %3   failed %4")
                .arg(rate(model.cacheReadsPerSecond(now)),
                     rate(model.controllerReadsPerSecond(now)), QString::number(model.changes()),
                     QString::number(model.failedReads())));
        if (!model.lastError().isEmpty()) {
            put(foot + 1, 0, QStringLiteral("last error: ") + model.lastError(), errorAttributes());
        }
        const QString hidden = model.size() > rows ? QStringLiteral("   %1 to %2 of %3, arrow keys")
                                                         .arg(first + 1)
                                                         .arg(std::min(first + rows, model.size()))
                                                         .arg(model.size())
                                                   : QString();
        put(foot + 2, 0, QStringLiteral("q or Ctrl-C ends") + hidden);
    }

    Console& console;
    const QString title;
    SCREEN* screen;
    const NumberBase base;
    bool colours = false;
    int addressWidth = 7;
    int first = 0;  // the tag in the first row
};

}  // namespace

std::unique_ptr<WatchView> makeTableView(Console& console, const QString& title, NumberBase base) {
    // Asked first: newterm() does not give everything back over a terminal it does not know, and
    // initscr() would end the program.
    int status = 0;
    if (setupterm(nullptr, STDOUT_FILENO, &status) != OK) {
        return nullptr;
    }
    del_curterm(cur_term);
    SCREEN* screen = newterm(nullptr, stdout, stdin);
    if (!screen) {
        return nullptr;
    }
    return std::make_unique<TableView>(console, title, screen, base);
}

#else

std::unique_ptr<WatchView> makeTableView(Console&, const QString&, NumberBase) {
    return nullptr;
}

#endif
