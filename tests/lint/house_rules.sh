#!/bin/sh
# Rules of the house that a compiler does not see. Each rule prints the lines that break it.
#
#   house_rules.sh ROOT
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
    [ "$folder" != eip ] || files=$(echo "$files" | grep -v '^eip/cip/')
    allowed=$(echo "$@" | tr ' ' '|')
    [ -z "$files" ] || echo "$files" | xargs grep -nHE '^ *# *include *"' |
        grep -vE "include *\"($allowed)/[^/\"]+\"" || :
}

includes_against_the_layers() {
    arrow runtime runtime
    arrow common common runtime
    arrow eip/cip eip/cip common
    arrow eip eip eip/cip common runtime
    arrow drivers drivers/ab_micro800_ethernet eip eip/cip common runtime
    # Two programs from the same mistake would agree with each other.
    search 'include *"(eip|drivers|common|runtime)/' apps/simulator
    # The host is to show what the plugin does; one command asks the controller itself.
    search 'include *"(eip|drivers)/' apps/micro800 | grep -vE '^apps/micro800/identity_(facts|query)\.' || :
    search 'include *"(tests|fuzz|bench)/' apps
}

rules='names_newer_than_qt47 qt_version_outside_its_header headers_that_an_old_moc_misreads
    words_that_do_not_belong includes_against_the_layers'

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
    cat >"$tree/$2"
    said=$(check "$tree" 2>&1) && said=
    if [ "$(echo "$said" | grep -c ':$')" != 1 ] || [ "$(echo "$said" | head -n 1)" != "$1:" ]; then
        printf 'self-test: %s with a sample for %s gave:\n%s\n' "$2" "$1" "$said" >&2
        exit 1
    fi
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo 'QString a = QStringLiteral("a");' | caught names_newer_than_qt47 common/a.cpp
echo 'connect(a, &A::done, b, &B::go);' | caught names_newer_than_qt47 drivers/x/a.cpp
echo 'text = QString().asprintf("%d", 1);' | caught names_newer_than_qt47 eip/a.cpp
echo '#if QT_VERSION < 5' | caught qt_version_outside_its_header eip/cip/a.h
echo "const int kLimit = 65'535;" | caught headers_that_an_old_moc_misreads common/a.h
printf 'class A final : public QObject {\n    Q_OBJECT\n};\n' | caught headers_that_an_old_moc_misreads common/b.h
echo 'as the specif''ication says' | caught words_that_do_not_belong README.md
echo 'see Part'' 4.1' | caught words_that_do_not_belong docs/a.md
echo 'for issue'' 7' | caught words_that_do_not_belong scripts/a
echo '#include "eip/worker.h"' | caught includes_against_the_layers common/a.cpp
echo '#include "eip/worker.h"' | caught includes_against_the_layers eip/cip/a.cpp
echo '#include "drivers/ab_micro800_ethernet/a.h"' | caught includes_against_the_layers eip/a.cpp
echo '#include "apps/micro800/a.h"' | caught includes_against_the_layers drivers/ab_micro800_ethernet/a.cpp
echo '#include "eip/cip/a.h"' | caught includes_against_the_layers apps/simulator/a.cpp
echo '#include "eip/worker.h"' | caught includes_against_the_layers apps/micro800/commands/read.cpp
echo '#include "tests/support/a.h"' | caught includes_against_the_layers apps/micro800/a.cpp

check "$1" || exit 1
echo 'the tree keeps the house rules'
