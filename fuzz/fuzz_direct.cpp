// What a controller answers to the commands that ask it directly: the list of its variables, and
// any message under --verbose.
//
// Input: the length of the first reply in 16 bits, whether there are more of it, and the bytes.

#include <cstdint>

#include "apps/micro800/controller/symbol_list.h"
#include "apps/micro800/controller/trace/frame_text.h"
#include "apps/micro800/format/address.h"
#include "apps/micro800/format/array_declaration.h"

namespace {

void demand(bool holds) {
    if (!holds) {
        __builtin_trap();
    }
}

/// An address that is handed out is one that the driver takes.
void demandGoodAddress(const Symbol& symbol) {
    const QString text = symbol.address();
    demand(text.isEmpty() != symbol.problem().isEmpty());
    QString problem;
    if (text.contains(QLatin1String(".."))) {
        ArrayDeclaration declaration;
        demand(parseArrayDeclaration(text, &declaration, &problem));
    } else if (!text.isEmpty()) {
        TagAddress address;
        demand(parseTagAddress(text, &address, &problem));
    }
}

void listFrom(const QByteArray& bytes) {
    const int kMore = 1;
    int at = 0;
    int asked = 0;
    const ObjectRequester request = [&](int, const QByteArray&, const QByteArray&) {
        ObjectReply reply;
        ++asked;
        if (bytes.size() - at < 3) {
            return reply;
        }
        const int size = (bytes.at(at) & 0xFF) | (bytes.at(at + 1) & 0x03) << 8;
        reply.answered = true;
        reply.status = bytes.at(at + 2) & kMore ? 6 : 0;
        reply.data = bytes.mid(at + 3, size);
        at += 3 + reply.data.size();
        return reply;
    };
    QVector<Symbol> symbols;
    QString problem;
    listSymbols(request, &symbols, &problem);
    demand(asked <= bytes.size() / 3 + 1);
    for (const Symbol& symbol : symbols) {
        demandGoodAddress(symbol);
    }
}

/// How many words the hex column of a line has.
int bytesIn(const QString& line) {
    const int kHexAt = 33;
    const int kHexWidth = 24;
    const int end = qMin(line.size(), kHexAt + kHexWidth);
    int words = 0;
    bool inWord = false;
    for (int i = kHexAt; i < end; ++i) {
        const bool isBlank = line.at(i) == QLatin1Char(' ');
        words += !isBlank && !inWord ? 1 : 0;
        inWord = !isBlank;
    }
    return words;
}

/// However a message is cut, every byte of it is shown once.
void showWhole(const QByteArray& bytes, bool isReply) {
    const QStringList lines = frameText(bytes, isReply);
    int shown = 0;
    for (int i = 1; i < lines.size(); ++i) {
        shown += bytesIn(lines.at(i));
    }
    demand(shown == bytes.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), int(size));
    listFrom(bytes);
    showWhole(bytes, true);
    showWhole(bytes, false);
    return 0;
}
