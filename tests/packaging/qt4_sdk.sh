#!/bin/sh
# The build takes a Qt 4 by its qmake alone: headers, libraries, moc. There is no Qt 4 to build with here, so
# a folder in the form of one replaces it; it shows how the build finds its way in an SDK, and not that the
# sources fit Qt 4 (lint.qt47 has the declarations) or that a panel's loader takes the result.
#
#   qt4_sdk.sh ROOT CMAKE COMPILER MOC
set -eu
root=$1
cmake=$2
compiler=$3
moc=$4

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 130' HUP INT TERM
sdk=$work/sdk
mkdir -p "$sdk/bin" "$sdk/lib" "$sdk/mkspecs/default" "$sdk/include/QtCore" "$sdk/include/QtSql"

cat >"$sdk/bin/qmake" <<EOQ
#!/bin/sh
[ "\$1" = -query ] || exit 1
case \$2 in
    QT_VERSION) echo "\${QT_VERSION_SAID:-4.7.3}" ;;
    QT_INSTALL_HEADERS) echo $sdk/include ;;
    QT_INSTALL_LIBS) echo $sdk/lib ;;
    QT_INSTALL_BINS) echo $sdk/bin ;;
    QMAKE_MKSPECS) echo $sdk/mkspecs ;;
    QT_INSTALL_*) echo $sdk ;;
    *) exit 1 ;;
esac
EOQ
chmod +x "$sdk/bin/qmake"
ln -s "$moc" "$sdk/bin/moc"
echo 'QT_CONFIG += release' >"$sdk/mkspecs/qconfig.pri"
for module in Core Sql; do
    touch "$sdk/include/Qt$module/Qt$module"
    echo 'int nothing() { return 0; }' | "$compiler" -shared -fPIC -x c++ - -o "$sdk/lib/libQt$module.so"
done
echo '#define Q_WS_QWS' >"$sdk/include/QtCore/qglobal.h"

configure() {
    "$cmake" -S "$root" -B "$work/build" -DCMAKE_CXX_COMPILER="$compiler" -DMICRO800_QT4=ON \
        -DMICRO800_HOST_PROGRAMS=OFF -DBUILD_TESTING=OFF -DMICRO800_STATIC_RUNTIME=ON "$@" >"$work/log" 2>&1
}
must() { "$@" || { cat "$work/log" >&2; echo "failed: $*" >&2; exit 1; }; }

must configure -DQT_QMAKE_EXECUTABLE="$sdk/bin/qmake"
commands=$work/build/compile_commands.json
must grep -q -- "-isystem $sdk/include/QtSql" "$commands"
must grep -q -- "-isystem $sdk/include/QtCore" "$commands"
if grep -q 'Qt5\|/qt5' "$commands"; then
    echo 'Qt 5 is in a build for Qt 4' >&2
    exit 1
fi
if grep -rq -e -rpath "$work/build" --include=link.txt --include=build.ninja; then
    echo 'the plugin would look for libraries in folders of the SDK' >&2
    exit 1
fi

# moc of the SDK, told about the SDK's headers.
must "$cmake" --build "$work/build" --target ab_micro800_ethernet_driver_autogen >>"$work/log" 2>&1
must grep -rqs DriverABMicro800Eth "$work/build/drivers/ab_micro800_ethernet/ab_micro800_ethernet_driver_autogen" \
    --include='moc_*.cpp'

# Another generation of Qt is refused, and so is a build that names none.
rm -rf "$work/build"
! QT_VERSION_SAID=5.15.8 configure -DQT_QMAKE_EXECUTABLE="$sdk/bin/qmake" ||
    { echo 'a qmake of Qt 5 was taken' >&2; exit 1; }
rm -rf "$work/build"
! configure || { echo 'a build without qmake was configured' >&2; exit 1; }
must grep -q 'QT_QMAKE_EXECUTABLE has to name' "$work/log"
