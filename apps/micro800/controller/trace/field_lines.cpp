#include "apps/micro800/controller/trace/field_lines.h"

#include <algorithm>

namespace {

const int kBytesPerLine = 8;
const int kNameWidth = 24;
const int kHexWidth = 3 * kBytesPerLine;

}  // namespace

quint32 FieldLines::peek(int size, int ahead) const {
    if (ahead > left() || size > left() - ahead) {
        return 0;
    }
    quint32 value = 0;
    for (int i = size - 1; i >= 0; --i) {
        value = value << 8 | static_cast<unsigned char>(bytes.at(at + ahead + i));
    }
    return value;
}

void FieldLines::field(const char* name, int size, const QString& meaning) {
    QString label = QLatin1String(name);
    QString remark = meaning;
    int todo = std::min(size, left());
    do {
        const QByteArray piece = bytes.mid(at, std::min(todo, kBytesPerLine));
        QString line = QStringLiteral("  %1  %2 %3 %4")
                           .arg(at, 4, 16, QLatin1Char('0'))
                           .arg(label, -kNameWidth)
                           .arg(QString::fromLatin1(piece.toHex(' ')), -kHexWidth)
                           .arg(remark);
        while (line.endsWith(QLatin1Char(' '))) {
            line.chop(1);
        }
        lines << line;
        label.clear();
        remark.clear();
        at += piece.size();
        todo -= piece.size();
    } while (todo > 0);
}

quint32 FieldLines::number(const char* name, int size) {
    const quint32 value = peek(size);
    field(name, size, QString::number(value));
    return value;
}

void FieldLines::rest(const char* name) {
    if (left() > 0) {
        field(name, left());
    }
}
