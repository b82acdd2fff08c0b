#!/bin/sh
# Rules of the house that a compiler does not see. Each rule prints the lines that break it.
#
#   house_rules.sh ROOT
# shellcheck disable=SC2016,SC2086  # programs of awk; lists of folders
set -eu

product='runtime common eip drivers'

# say_lines RULE: passes the lines on standard input on, under the rule's name; fails when there are any.
say_lines() {
    lines=$(cat)
    [ -n "$lines" ] || return 0
    printf '%s:\n%s\n' "$1" "$lines" >&2
    return 1
}

# sources FOLDER...: the C++ files below them, those that exist.
sources() {
    for folder in "$@"; do
        [ ! -d "$folder" ] || find "$folder" -name '*.h' -o -name '*.cpp'
    done
}

# search PATTERN FOLDER...: lines with the pattern; no line is no error.
search() {
    pattern=$1
    shift
    sources "$@" | xargs -r grep -nHE -e "$pattern" || :
}

tracked() {
    if [ -e .git ] && command -v git >/dev/null; then git ls-files -z; else find . -name ".git" -prune -o -name "build*" -prune -o -type f -print0; fi
}

# What came after Qt 4.7 and is easily written by habit. tests/lint/qt47.sh finds the rest.
names_newer_than_qt47() {
    search '\b(QStringLiteral|QByteArrayLiteral|QLoggingCategory|qC(Debug|Info|Warning|Critical)|qInfo|QJson[A-Z]\w*|QCommandLineParser|QTemporaryDir|QRegularExpression\w*|QStandardPaths|QStringView|QStringBuilder|QScopeGuard|QSignalBlocker|QDeadlineTimer|QAtomicInteger|QRandomGenerator|qAsConst|qUtf8Printable|qEnvironmentVariable\w*|qOverload|Q_NULLPTR|Q_DECL_(OVERRIDE|FINAL|NOEXCEPT|NOTHROW|CONSTEXPR|EQ_DELETE)|Q_FALLTHROUGH|Q_ENUM|Q_GADGET_EXPORT|Q_NAMESPACE|Qt::(SkipEmptyParts|KeepEmptyParts))\b' $product
    search '[.>:](asprintf|toHtmlEscaped|loadAcquire|storeRelease|nsecsElapsed|fromStdVector|toStdU16String|chopped|compare3way|isRequestInterrupted|requestInterruption|removeLast\(\)\.|keyBegin|keyValueBegin|crbegin|rbegin|swapItemsAt)\b' $product
    search '\bconnect\([^;]*, *&[A-Za-z_]+::' $product
}

# What a panel with Linux 2.6.24 answers with "invalid argument" or "not implemented", and GLIBC_2.4 lacks.
# The sockets have their way around it in one file.
names_newer_than_the_panels_system() {
    search '\b(SOCK_NONBLOCK|EPOLL_CLOEXEC|[EST]FD_(CLOEXEC|NONBLOCK)|IN_(CLOEXEC|NONBLOCK)|O_PATH|O_TMPFILE|accept4|pipe2|dup3|eventfd|timerfd_\w+|signalfd|epoll_(create1|pwait)|inotify_init1|recvmmsg|sendmmsg|getrandom|getentropy|memfd_create|preadv|pwritev|syscall|CPU_(COUNT|ALLOC|FREE)(_S)?|secure_getenv|explicit_bzero|pthread_(setname_np|getname_np|cond_clockwait))\b' $product
    search '\bSOCK_CLOEXEC\b' $product | grep -v '^eip/socket_tools\.cpp:' || :
}

qt_version_outside_its_header() {
    search '\bQT_VERSION(_CHECK|_STR)?\b' $product | grep -v '^common/qt_compat\.h:' || :
}

# The panel's moc knows C++ of its day: such a header it takes apart wrongly.
headers_that_an_old_moc_misreads() {
    sources $product | grep '\.h$' | xargs -r grep -nHE -e "[0-9]'[0-9]" -e '\bR"[A-Za-z_]*\(' || :
    sources $product | grep '\.h$' | xargs -r grep -lw 'Q_OBJECT' |
        xargs -r grep -nHE '\b(class|struct) +\w+ +final\b' || :
}

# The tree speaks for itself: nothing in it points to papers and lists that are not in it.
words_that_do_not_belong() {
    tracked | xargs -0 -r grep -nHIE \
        -e '\b[Ss]pecif''ications?\b' -e '\bspec''\.md\b' -e '\bPart''s? [1-6]\.[1-7]\b' -e '\b([Tt]he|[Pp]er) sp''ec\b' -e 'DEVELOPERS''\.md' \
        -e '\b[Ii]ssue'' #?[0-9]+\b' || :
}

# arrow FOLDER ALLOWED...: what the files right in the folder, and in folders below that are no layer of
# their own, may include of this tree.
arrow() {
    folder=$1
    shift
    files=$(sources "$folder")
    [ "$folder" != eip ] || files=$(echo "$files" | grep -vE '^eip/(cip|record)/')
    [ "$folder" != apps/micro800/controller ] || files=$(echo "$files" | grep -vE '/controller/.*/' || :)
    [ "$folder" != apps/micro800/serve ] || files=$(echo "$files" | grep -vE '/serve/.*/' || :)
    allowed=$(echo "$@" | tr ' ' '|')
    [ -z "$files" ] || echo "$files" | xargs grep -nHE '^ *# *include *"' |
        grep -vE "include *\"($allowed)/[^/\"]+\"" || :
}

# From the bytes up; what lies right in apps/simulator/ may use all of them.
simulator_folders() {
    below=
    for floor in wire values tags pccc faults objects server; do
        below="$below apps/simulator/$floor"
        # shellcheck disable=SC2086
        arrow "apps/simulator/$floor" $below
    done
}

# The host speaks with two voices, through the plugin file and straight to the controller; neither knows the
# other. What lies right in apps/micro800/ may use all of them.
micro800_folders() {
    host=apps/micro800
    arrow $host/base $host/base
    arrow $host/format $host/base $host/format common runtime
    arrow $host/terminal $host/base $host/format $host/terminal
    arrow $host/project $host/base $host/format $host/project common
    arrow $host/plugin $host/base $host/format $host/plugin common runtime
    arrow $host/polling $host/base $host/format $host/polling
    arrow $host/setpoints $host/base $host/format $host/plugin $host/setpoints common runtime
    arrow $host/controller/trace $host/base $host/format $host/controller/trace eip eip/cip
    direct="$host/base $host/format $host/terminal $host/controller $host/controller/trace eip eip/cip common"
    # shellcheck disable=SC2086
    {
        arrow $host/controller $direct
        arrow $host/controller/check $direct $host/controller/check
        arrow $host/controller/discovery $direct $host/controller/discovery
        arrow $host/controller/doctor $direct $host/controller/check $host/controller/doctor
    }
    arrow $host/recording $host/base $host/format $host/controller/trace $host/recording
    arrow $host/watch $host/base $host/format $host/terminal $host/plugin $host/watch common
    # The page shows what the driver reads and what the doctor advises. Only http/ knows the library.
    arrow $host/serve/http $host/base $host/format $host/serve/http
    arrow $host/serve/help $host/format $host/controller/doctor $host/serve/help
    arrow $host/serve/live $host/base $host/format $host/watch $host/serve/help $host/serve/live
    arrow $host/serve/routes $host/format $host/serve/help $host/serve/http $host/serve/live $host/serve/routes
    served="$host/serve/help $host/serve/http $host/serve/live $host/serve/routes"
    # shellcheck disable=SC2086
    arrow $host/serve $host/base $host/format $host/terminal $host/plugin $host/polling $host/watch $served $host/serve runtime
    search 'include *<microhttpd\.h>' apps tests fuzz bench | grep -v "^$host/serve/http/" || :
    # Neither an option nor a report knows a command.
    search 'include *"apps/micro800/(commands|reports)/' $host/options
    search 'include *"apps/micro800/commands/' $host/reports
    search 'include *"(eip|drivers)/' $host | grep -v "^$host/controller/" || :
    search '\b(QPluginLoader|QLibrary|dlopen)\b' $host | grep -v "^$host/plugin/" || :
}

includes_against_the_layers() {
    arrow runtime runtime
    arrow common common runtime
    arrow eip/cip eip/cip common
    arrow eip/record eip/record eip/cip common runtime
    arrow eip eip eip/record eip/cip common runtime
    arrow drivers drivers/ab_micro800_ethernet eip eip/record eip/cip common runtime
    simulator_folders
    # Two programs from the same mistake would agree with each other.
    search 'include *"(eip|drivers|common|runtime)/' apps/simulator
    micro800_folders
    search 'include *"(tests|fuzz|bench)/' apps
}

# Everything that is written in C++, programs in the docs included.
all_sources() {
    sources $product apps bench docs fuzz packaging tests
}

# Lines as clang-format-14 would not write them, with the tree's own rules.
format_of_another_house() {
    if ! command -v clang-format-14 >/dev/null; then
        echo 'clang-format-14 is missing: apt-get install clang-format-14'
        return
    fi
    all_sources | xargs -r clang-format-14 --dry-run 2>&1 | grep ' warning: ' || :
}

# code_only: FILE:LINE:TEXT for every line of the sources that are named on standard input, without comments
# and with empty literals, so that a pattern meets code only.
code_only() {
    xargs -r awk '
        FNR == 1 { inside = 0; raw = 0 }
        {
            text = $0
            if (raw && !sub(/^.*\)"/, "\"", text)) { text = "" } else { raw = 0 }
            gsub(/\\\\/, "", text)
            gsub(/\\"/, "", text)
            gsub(/\047(\\.[^\047]*|[^\047\\])\047/, "0", text)
            if (text ~ /R"[A-Za-z_]*\(/ && text !~ /\)[A-Za-z_]*"/) { raw = 1; sub(/R".*/, "", text) }
            gsub(/"[^"]*"/, "\"\"", text)
            sub(/\/\/.*/, "", text)
            if (inside && !sub(/^.*\*\//, "", text)) { next }
            inside = 0
            gsub(/\/\*[^*]*\*\//, "", text)
            if (sub(/\/\*.*/, "", text)) { inside = 1 }
            if (text ~ /[^ ]/) { print FILENAME ":" FNR ":" text }
        }'
}

# A condition may go over several lines: it ends where its parentheses close.
statements_without_braces() {
    all_sources | code_only | awk '
        {
            line = $0
            sub(/^[^:]*:[0-9]*:/, "", line)
            if (line ~ /^ *#/) { next }
            if (!open && line ~ /(^|[^A-Za-z_0-9])else$|(^|[^A-Za-z_0-9])do$/) { print; next }
            if (!open && line ~ /(^|[^A-Za-z_0-9])else [^{i]/) { print; next }
            if (!open && match(line, /(^|[} ])(if|if constexpr|for|while|foreach|Q_FOREACH) *\(/)) {
                isLoopEnd = line ~ /^ *} while/
                head = $0
                line = substr(line, RSTART + RLENGTH - 1)
                open = 1
                depth = 0
            }
            if (!open) { next }
            for (i = 1; i <= length(line); ++i) {
                c = substr(line, i, 1)
                if (c == "(") { ++depth }
                if (c == ")" && --depth == 0) {
                    rest = substr(line, i + 1)
                    if (!isLoopEnd && rest !~ /^ *\{/) { print head }
                    open = 0
                    break
                }
            }
        }'
}

# Members are told from other names by where they are declared, not by a mark.
names_with_marks() {
    all_sources | code_only | grep -E ':[0-9]+:.*\b([a-z][A-Za-z0-9]*_|m_[A-Za-z0-9]+)\b' || :
}

# What a function returns beside its result is a pointer and shows at the call. A buffer that is built up
# comes first and is a reference, as a stream is.
out_parameters_by_reference() {
    sources apps bench docs fuzz packaging tests | grep -v '^tests/lint/qt47/' | code_only |
        grep -E '(^[^:]*:[0-9]+: +|[(,] *)((std|sim)::)?(Q[A-Z][a-z]+(Array|Map|List)?|bool|char|short|int|long|float|double|s?size_t|qu?int[0-9]+|qreal|u?int[0-9]+_t|unsigned( [a-z]+)?|string|vector<[^&]*>|deque<[^&]*>|[A-Z][A-Za-z]*(Request|Header|Packet|Address|Path|Status|Parameter|Access|Triad|Options))& [a-z]\w*(,|\)|$)' || :
    sources apps/simulator tests/unit/apps/simulator | code_only | grep -E ', *(sim::)?Bytes& [a-z]' || :
}

rules='names_newer_than_qt47 names_newer_than_the_panels_system qt_version_outside_its_header
    headers_that_an_old_moc_misreads words_that_do_not_belong includes_against_the_layers format_of_another_house statements_without_braces
    names_with_marks out_parameters_by_reference'

# check ROOT: runs every rule there; prints the names of the broken ones with their lines.
check() {
    (
        cd "$1"
        broken=0
        for rule in $rules; do
            $rule | say_lines "$rule" || broken=1
        done
        exit $broken
    )
}

# caught RULE FILE: the sample on standard input, as FILE of a tree of its own, breaks that rule and no other.
caught() {
    tree=$(mktemp -d "$work/XXXXXX")
    mkdir -p "$tree/$(dirname "$2")"
    cp "$format" "$tree/.clang-format"
    cat >"$tree/$2"
    said=$(check "$tree" 2>&1) && said=
    if [ "$(echo "$said" | grep -c ':$')" != 1 ] || [ "$(echo "$said" | head -n 1)" != "$1:" ]; then
        printf 'self-test: %s with a sample for %s gave:\n%s\n' "$2" "$1" "$said" >&2
        exit 1
    fi
}

format=$(cd "$1" && pwd)/.clang-format
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 130' HUP INT TERM

echo 'QString a = QStringLiteral("a");' | caught names_newer_than_qt47 common/a.cpp
echo 'connect(a, &A::done, b, &B::go);' | caught names_newer_than_qt47 drivers/x/a.cpp
echo 'text = QString().asprintf("%d", 1);' | caught names_newer_than_qt47 eip/a.cpp
echo 'socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);' | caught names_newer_than_the_panels_system eip/a.cpp
echo 'return CPU_COUNT(&processors) > 1;' | caught names_newer_than_the_panels_system common/a.cpp
echo '#if QT_VERSION < 5' | caught qt_version_outside_its_header eip/cip/a.h
echo "const int kLimit = 65'535;" | caught headers_that_an_old_moc_misreads common/a.h
printf 'class A final : public QObject {\n    Q_OBJECT\n};\n' | caught headers_that_an_old_moc_misreads common/b.h
echo 'as the specif''ication says' | caught words_that_do_not_belong README.md
echo 'see Part'' 4.1' | caught words_that_do_not_belong docs/a.md
echo 'for issue'' 7' | caught words_that_do_not_belong scripts/a
echo '#include "eip/worker.h"' | caught includes_against_the_layers common/a.cpp
echo '#include "eip/worker.h"' | caught includes_against_the_layers eip/cip/a.cpp
echo '#include "eip/record/a.h"' | caught includes_against_the_layers eip/cip/a.cpp
echo '#include "eip/worker.h"' | caught includes_against_the_layers eip/record/a.cpp
echo '#include "drivers/ab_micro800_ethernet/a.h"' | caught includes_against_the_layers eip/a.cpp
echo '#include "apps/micro800/a.h"' | caught includes_against_the_layers drivers/ab_micro800_ethernet/a.cpp
echo '#include "eip/cip/a.h"' | caught includes_against_the_layers apps/simulator/a.cpp
echo '#include "apps/simulator/tags/a.h"' | caught includes_against_the_layers apps/simulator/wire/a.cpp
echo '#include "apps/simulator/options.h"' | caught includes_against_the_layers apps/simulator/server/a.cpp
echo '#include "eip/worker.h"' | caught includes_against_the_layers apps/micro800/commands/read.cpp
echo '#include "eip/worker.h"' | caught includes_against_the_layers apps/micro800/program.cpp
echo '#include "apps/micro800/plugin/plugin.h"' | caught includes_against_the_layers apps/micro800/controller/a.cpp
echo '#include "apps/micro800/controller/doctor/a.h"' | caught includes_against_the_layers apps/micro800/controller/a.cpp
echo '#include "apps/micro800/controller/a.h"' | caught includes_against_the_layers apps/micro800/controller/trace/a.cpp
echo '#include <QPluginLoader>' | caught includes_against_the_layers apps/micro800/commands/read.cpp
echo '#include <microhttpd.h>' | caught includes_against_the_layers apps/micro800/commands/serve.cpp
echo '#include "apps/micro800/controller/a.h"' | caught includes_against_the_layers apps/micro800/serve/a.cpp
echo '#include "apps/micro800/serve/routes/a.h"' | caught includes_against_the_layers apps/micro800/serve/live/a.cpp
echo '#include <microhttpd.h>' | caught includes_against_the_layers apps/micro800/serve/routes/a.cpp
echo '#include "tests/support/a.h"' | caught includes_against_the_layers apps/micro800/a.cpp

printf 'int  a;\n' | caught format_of_another_house apps/a.cpp
printf 'void f() {\n    if (a)\n        return;\n}\n' | caught statements_without_braces fuzz/a.cpp
printf 'void f() {\n    while (a &&  // first\n           b)\n        g();\n}\n' | caught statements_without_braces tests/a.cpp
printf 'void f() {\n    if (a) {\n        g();\n    } else\n        h();\n}\n' | caught statements_without_braces common/a.cpp
printf 'void f() {\n    do\n        g();\n    while (h());\n}\n' | caught statements_without_braces bench/a.cpp
echo 'int member_ = 0;' | caught names_with_marks docs/examples/a.cpp
echo 'int m_member = 0;' | caught names_with_marks packaging/panel/a.cpp
echo 'bool read(int size, QString& problem);' | caught out_parameters_by_reference apps/a.h
echo 'bool decode(ByteView bytes, CipRequest& request);' | caught out_parameters_by_reference apps/a.h
echo 'void service(int size, Bytes& reply);' | caught out_parameters_by_reference apps/simulator/a.h

check "$1" || exit 1
echo 'the tree keeps the house rules'
