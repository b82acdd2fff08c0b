#include "eip/pipe_protocol.h"

#include <cstring>

namespace {

const char kUpperDigits[] = "0123456789ABCDEF";
const char kLowerDigits[] = "0123456789abcdef";

/// Below are control characters, the separators and line ends among them.
const unsigned char kFirstPrintable = 0x20;
const unsigned short kLastLatin1 = 0xFF;

/// "%02X\t%04X" and what ends or continues it.
const int kPrefixSize = 2 + 1 + 4 + 1;

/// Writes one line piece by piece. Once something did not fit or must not be sent, the rest is
/// ignored and the result is -1.
class LineWriter {
 public:
    /// One byte of `n` is kept for the terminator.
    LineWriter(char* dst, int n) : begin(dst), at(dst), room(n > 0 ? n - 1 : 0), valid(n > 0) {}

    void character(char c) {
        if (reserve(1)) {
            *at++ = c;
        }
    }

    /// At least `digits` upper-case hex digits.
    void hex(unsigned int value, int digits) {
        char text[2 * sizeof value];
        int start = sizeof text;
        while (value != 0 || static_cast<int>(sizeof text) - start < digits) {
            text[--start] = kUpperDigits[value & 0xF];
            value >>= 4;
        }
        bytes(text + start, static_cast<int>(sizeof text) - start);
    }

    void decimal(int value) {
        // Unsigned, since the smallest int has no positive counterpart.
        unsigned int rest = static_cast<unsigned int>(value);
        if (value < 0) {
            character('-');
            rest = 0u - rest;
        }
        char text[10];  // digits of the largest 32-bit number
        int start = sizeof text;
        do {
            text[--start] = static_cast<char>('0' + rest % 10);
            rest /= 10;
        } while (rest != 0);
        bytes(text + start, static_cast<int>(sizeof text) - start);
    }

    /// A field that must stay one field: with a control character there is no line.
    void field(const QString& text) {
        characters(text.constData(), static_cast<size_t>(text.size()), kRefuseControls);
    }
    void field(const char* text) {
        valid = valid && text;
        if (valid) {
            characters(text, std::strlen(text), kRefuseControls);
        }
    }

    /// Free text: a control character becomes a blank.
    void message(const QString& text) {
        characters(text.constData(), static_cast<size_t>(text.size()), kBlankControls);
    }
    void message(const char* text) { characters(text, std::strlen(text), kBlankControls); }

    /// Two lower-case hex digits a byte.
    void value(const QByteArray& data) {
        if (!reserve(2 * static_cast<quint64>(data.size()))) {
            return;
        }
        const char* source = data.constData();
        for (int i = 0; i < data.size(); ++i) {
            const unsigned char byte = static_cast<unsigned char>(source[i]);
            *at++ = kLowerDigits[byte >> 4];
            *at++ = kLowerDigits[byte & 0xF];
        }
    }

    void codeAndId(unsigned char code, unsigned short tid) {
        hex(code, 2);
        character('\t');
        hex(tid, 4);
    }

    /// Characters written so far, -1 when they are no line.
    int length() const { return valid ? static_cast<int>(at - begin) : -1; }

    /// Ends line and text.
    int finish() {
        character('\n');
        if (valid) {
            *at = 0;
        }
        return length();
    }

 private:
    enum Controls { kRefuseControls, kBlankControls };

    static unsigned short unitOf(QChar c) { return c.unicode(); }
    static unsigned short unitOf(char c) { return static_cast<unsigned char>(c); }

    bool reserve(quint64 count) {
        valid = valid && count <= static_cast<quint64>(room);
        if (valid) {
            room -= static_cast<int>(count);
        }
        return valid;
    }

    template <typename Char>
    void characters(const Char* text, size_t count, Controls controls) {
        if (!reserve(count)) {
            return;
        }
        for (size_t i = 0; i < count; ++i) {
            const unsigned short unit = unitOf(text[i]);
            if (unit >= kFirstPrintable) {
                *at++ = unit > kLastLatin1 ? '?' : static_cast<char>(unit);
            } else {
                *at++ = ' ';
                valid = valid && controls == kBlankControls;
            }
        }
    }

    void bytes(const char* text, int count) {
        if (reserve(static_cast<quint64>(count))) {
            std::memcpy(at, text, static_cast<size_t>(count));
            at += count;
        }
    }

    char* const begin;
    char* at;
    int room;  ///< characters that still fit, without the terminator
    bool valid;
};

/// "code, id" alone, or the failure answer with its text.
int packPlainRsp(char* dst, int n, unsigned char code, unsigned short tid, const char* err) {
    LineWriter line(dst, n);
    if (!err) {
        line.codeAndId(code, tid);
        return line.finish();
    }
    line.codeAndId(code | kLgxDriverFailFlag, tid);
    line.character('\t');
    line.message(err);
    return line.finish();
}

/// Name, type and value of a write, without the line's end.
void writeFields(LineWriter& line, unsigned short tid, const char* name, unsigned int type,
                 const QByteArray& data) {
    line.codeAndId(kLgxDriverWrite, tid);
    line.character('\t');
    line.field(name);
    line.character('\t');
    line.hex(type, 2);
    line.character('\t');
    line.value(data);
}

/// The text after "code, id, last" if that is at a line start of `buf`, else null. Only its
/// first occurrence counts.
const char* findAnswer(const char* buf, unsigned char code, unsigned short tid, char last) {
    char prefix[kPrefixSize + 1];
    LineWriter writer(prefix, sizeof prefix);
    writer.codeAndId(code, tid);
    writer.character(last);
    prefix[kPrefixSize] = 0;
    if (std::strncmp(buf, prefix, kPrefixSize) == 0) {
        return buf + kPrefixSize;
    }
    const char* hit = std::strstr(buf, prefix);
    return hit && hit[-1] == '\n' ? hit + kPrefixSize : 0;
}

/// What went wrong, by a failure answer or the lack of any.
QString failureText(const char* buf, unsigned char code, unsigned short tid, const char* noAnswer) {
    const char* text = findAnswer(buf, code | kLgxDriverFailFlag, tid, '\t');
    return text ? QString::fromLatin1(text).trimmed() : QString::fromLatin1(noAnswer);
}

}  // namespace

int LgxDriverPackSetSessionCmd(char* dst, int n, unsigned short tid,
                               const QList<LgxReadCmd>& list) {
    LineWriter line(dst, n);
    line.codeAndId(kLgxDriverSetSession, tid);
    for (QList<LgxReadCmd>::const_iterator entry = list.constBegin(); entry != list.constEnd();
         ++entry) {
        line.character('\t');
        line.field(entry->name);
        line.character('\t');
        line.decimal(entry->count);
    }
    const int length = line.length();
    if (list.isEmpty() || length < 0) {
        return -1;
    }
    // In the place that the writer keeps for a terminator.
    dst[length] = '\n';
    return length + 1;
}

int LgxDriverPackSetSessionRsp(char* dst, int n, unsigned short tid, bool ok) {
    LineWriter line(dst, n);
    line.codeAndId(ok ? kLgxDriverSetSession : kLgxDriverSetSession | kLgxDriverFailFlag, tid);
    return line.finish();
}

int LgxDriverPackReadCmd(char* dst, int n, unsigned short tid, const QString& name, int count) {
    LineWriter line(dst, n);
    line.codeAndId(kLgxDriverRead, tid);
    line.character('\t');
    line.field(name);
    line.character('\t');
    line.decimal(count);
    return line.finish();
}

int LgxDriverPackReadRsp(char* dst, int n, unsigned short tid, const QByteArray& data) {
    return LgxDriverPackReadXXXRsp(dst, n, kLgxDriverRead, tid, data);
}

int LgxDriverPackReadFailRsp(char* dst, int n, unsigned short tid, const QString& err) {
    return LgxDriverPackFailRsp(dst, n, kLgxDriverRead, tid, err);
}

int LgxDriverPackMicro800WriteCmd(char* dst, int n, unsigned short tid, const char* name,
                                  _LGX_Data_Type type, const QByteArray& data) {
    LineWriter line(dst, n);
    writeFields(line, tid, name, static_cast<unsigned int>(type) & 0xFF, data);
    return line.finish();
}

int LgxDriverPackCompactLogixWriteCmd(char* dst, int n, unsigned short tid, const char* name,
                                      _LGX_Data_Type type, const QByteArray& data, int a, int b) {
    LineWriter line(dst, n);
    writeFields(line, tid, name, static_cast<unsigned int>(type), data);
    line.character('\t');
    line.decimal(a);
    line.character('\t');
    line.decimal(b);
    return line.finish();
}

int LgxDriverPackWriteRsp(char* dst, int n, unsigned short tid, const char* err) {
    return packPlainRsp(dst, n, kLgxDriverWrite, tid, err);
}

int LgxDriverPackMicro800ReadArrayElementsCmd(char* dst, int n, unsigned short tid,
                                              const QString& arrayName, const QString& indexText,
                                              _LGX_Data_Type type, int elementCount, int arraySize,
                                              int byteOffset) {
    LineWriter line(dst, n);
    line.codeAndId(kLgxDriverReadArrayElements, tid);
    line.character('\t');
    line.field(arrayName);
    line.character('\t');
    line.field(indexText);
    line.character('\t');
    line.hex(static_cast<unsigned int>(type), 2);
    line.character('\t');
    line.decimal(elementCount);
    line.character('\t');
    line.decimal(arraySize);
    line.character('\t');
    line.decimal(byteOffset);
    return line.finish();
}

int LgxDriverPackReadArrayElementRsp(char* dst, int n, unsigned short tid, const QByteArray& data) {
    return LgxDriverPackReadXXXRsp(dst, n, kLgxDriverReadArrayElements, tid, data);
}

int LgxDriverPackReadArrayElementFailRsp(char* dst, int n, unsigned short tid, const QString& err) {
    return LgxDriverPackFailRsp(dst, n, kLgxDriverReadArrayElements, tid, err);
}

int LgxDriverPackIpSettingChangedCmd(char* dst, int n, unsigned short tid, const QString& ip,
                                     unsigned short port) {
    LineWriter line(dst, n);
    line.codeAndId(kLgxDriverIpSettingChanged, tid);
    line.character('\t');
    line.field(ip);
    line.character('\t');
    line.decimal(port);
    return line.finish();
}

int LgxDriverPackIpSettingChangedRsp(char* dst, int n, unsigned short tid, const char* err) {
    return packPlainRsp(dst, n, kLgxDriverIpSettingChanged, tid, err);
}

int LgxDriverPackFailRsp(char* dst, int n, unsigned char code, unsigned short tid,
                         const QString& err) {
    LineWriter line(dst, n);
    line.codeAndId(code | kLgxDriverFailFlag, tid);
    line.character('\t');
    line.message(err);
    return line.finish();
}

int LgxDriverPackReadXXXRsp(char* dst, int n, unsigned char code, unsigned short tid,
                            const QByteArray& data) {
    LineWriter line(dst, n);
    line.codeAndId(code, tid);
    line.character('\t');
    if (data.isEmpty()) {
        line.hex(0, 2);
    } else {
        line.value(data);
    }
    return line.finish();
}

bool LgxDriverCheckRsp(const char* buf, unsigned char code, unsigned short tid, QString& err) {
    if (findAnswer(buf, code, tid, '\n')) {
        return true;
    }
    err = failureText(buf, code, tid, "invalid response(internal error2)");
    return false;
}

bool LgxDriverCheckReadRsp(const char* buf, unsigned short tid, QString& err) {
    return LgxDriverCheckRsp(buf, kLgxDriverRead, tid, err);
}

bool LgxDriverCheckWriteRsp(const char* buf, unsigned short tid, QString& err) {
    return LgxDriverCheckRsp(buf, kLgxDriverWrite, tid, err);
}

bool LgxDriverCheckIpSettingChangedRsp(const char* buf, unsigned short tid, QString& err) {
    return LgxDriverCheckRsp(buf, kLgxDriverIpSettingChanged, tid, err);
}

bool LgxDriverCheckSetSessionRsp(const char* buf, unsigned short tid) {
    return findAnswer(buf, kLgxDriverSetSession, tid, '\n') != 0;
}

QByteArray LgxDriverReadXXXRspToByteArray(const char* buf, unsigned char code, unsigned short tid,
                                          QString& err) {
    if (const char* digits = findAnswer(buf, code, tid, '\t')) {
        const int length = static_cast<int>(std::strlen(digits));
        return QByteArray::fromHex(QByteArray::fromRawData(digits, length));
    }
    err = failureText(buf, code, tid, "invalid response(internal error)");
    return QByteArray();
}

QByteArray LgxDriverReadRspToByteArray(const char* buf, unsigned short tid, QString& err) {
    return LgxDriverReadXXXRspToByteArray(buf, kLgxDriverRead, tid, err);
}

QByteArray LgxDriverReadArrayElementRspToByteArray(const char* buf, unsigned short tid,
                                                   QString& err) {
    return LgxDriverReadXXXRspToByteArray(buf, kLgxDriverReadArrayElements, tid, err);
}
