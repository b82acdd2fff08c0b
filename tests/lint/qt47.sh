#!/bin/sh
# Compiles the product's sources against declarations of what Qt 4.7 has (tests/lint/qt47/) and with system
# headers of Linux 2.6.24 and glibc 2.5, without making anything of them, and sees that sources which use more
# are refused. So are casts to types that a processor
# with strict alignment could not read there.
#
#   qt47.sh ROOT COMPILER
set -eu
root=$1
compiler=$2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 130' HUP INT TERM

# headers FILE NAME...: the public headers that FILE declares the classes of.
headers() {
    file=$1
    shift
    for name in "$@"; do
        echo "#include \"$root/tests/lint/qt47/$file\"" >"$work/$name"
    done
}
headers qglobal.h QtGlobal
headers text.h QByteArray QChar QLatin1Char QLatin1String QRegExp QString
headers containers.h QHash QList QPair QSet QStringList QVector
headers objects.h QCoreApplication QDataStream QDebug QDir QElapsedTimer QFile QFileInfo QIODevice \
    QMutex QMutexLocker QObject QPointer QSqlDatabase QSqlError QSqlQuery QThread QTime QVariant \
    QtDebug QtEndian QtPlugin

# older HEADER NAME...: the system's header without constants that came later. Some are enumerators as well.
older() {
    header=$1
    shift
    mkdir -p "$work/$(dirname "$header")"
    {
        printf '#define %s later_%s\n' "$1" "$1"
        printf '#include_next <%s>\n' "$header"
        printf '#undef %s\n' "$@"
    } >"$work/$header"
}
older sys/socket.h SOCK_CLOEXEC
older sys/prctl.h PR_SET_TIMERSLACK

align=-Wcast-align=strict
echo | "$compiler" -Werror $align -fsyntax-only -x c++ - 2>/dev/null || align=
compile() {
    "$compiler" -std=c++17 -Wall -Wextra -Werror $align -fsyntax-only -isystem "$work" -I "$root" "$@"
}

# refused NAME: the sample on standard input must not compile.
refused() {
    cat >"$work/$1.cpp"
    if compile "$work/$1.cpp" 2>"$work/$1.log"; then
        echo "self-test: the sample '$1' was taken for Qt 4.7" >&2
        exit 1
    fi
}

refused newer_function <<'SAMPLE'
#include <QString>
QString escaped(const QString& text) { return text.toHtmlEscaped(); }
SAMPLE
refused newer_macro <<'SAMPLE'
#include <QString>
QString name() { return QStringLiteral("name"); }
SAMPLE
refused list_from_braces <<'SAMPLE'
#include <QList>
QList<int> list() { return {1, 2, 3}; }
SAMPLE
refused newer_class <<'SAMPLE'
#include <QJsonDocument>
SAMPLE
refused connect_to_member <<'SAMPLE'
#include <QThread>
void connectTo(QThread* a, QObject* b) { QObject::connect(a, &QThread::quit, b, &QObject::deleteLater); }
SAMPLE
refused newer_overload <<'SAMPLE'
#include <QByteArray>
QByteArray spaced(const QByteArray& bytes) { return bytes.toHex(' '); }
SAMPLE
refused text_of_unknown_encoding <<'SAMPLE'
#include <QString>
QString name(const char* bytes) { return bytes; }
SAMPLE
refused newer_socket_flag <<'SAMPLE'
#include <sys/socket.h>
int open() { return socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0); }
SAMPLE
refused newer_prctl <<'SAMPLE'
#include <sys/prctl.h>
int slack() { return prctl(PR_SET_TIMERSLACK, 1); }
SAMPLE
if [ -n "$align" ]; then
    refused cast_to_more_alignment <<'SAMPLE'
int number(const char* bytes) { return *reinterpret_cast<const int*>(bytes); }
SAMPLE
fi

# The samples are refused for what they do, not for headers that do not compile.
cat >"$work/plain.cpp" <<'SAMPLE'
#include <QHash>
#include <QObject>
#include <QStringList>
int total(const QHash<QString, int>& counts) {
    int sum = 0;
    for (int count : counts)
        sum += count;
    return sum;
}
SAMPLE
compile "$work/plain.cpp"

failed=0
sources=$(cd "$root" && find runtime common eip drivers -name '*.cpp' | sort)
for header in $(cd "$root" && find runtime common eip drivers -name '*.h' | sort); do
    echo "#include \"$header\""
done >"$work/headers.cpp"
compile "$work/headers.cpp" || failed=1
echo "$sources" | xargs -P "$(getconf _NPROCESSORS_ONLN)" -I '{}' \
    "$compiler" -std=c++17 -Wall -Wextra -Werror $align -fsyntax-only -isystem "$work" -I "$root" "$root/{}" ||
    failed=1

# What the loader of Qt 4 asks a plugin for. Qt 5's moc writes the first of them, Qt 4's does not.
"$compiler" -std=c++17 -fPIC -fvisibility=hidden -isystem "$work" -I "$root" \
    -c "$root/drivers/ab_micro800_ethernet/plugin.cpp" -o "$work/plugin.o" || failed=1
for symbol in qt_plugin_instance qt_plugin_query_verification_data CreateDriver; do
    readelf -sW "$work/plugin.o" | grep -q "FUNC *GLOBAL *DEFAULT .* $symbol\$" ||
        { echo "$symbol is not exported to Qt 4" >&2; failed=1; }
done

[ $failed = 0 ] || { echo 'the product uses what Qt 4.7 does not have, or what tests/lint/qt47 does not list' >&2; exit 1; }
echo "$(echo "$sources" | wc -l) sources keep to Qt 4.7"
