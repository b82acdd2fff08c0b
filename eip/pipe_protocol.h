#ifndef EIP_PIPE_PROTOCOL_H
#define EIP_PIPE_PROTOCOL_H

#include <QByteArray>
#include <QList>
#include <QString>

#include "eip/cip/logix_services.h"

/// The text lines between driver and worker.
///
/// A line is 8-bit text, its fields separated by one tab, ended by one line feed. Field 1 is the
/// code (two upper-case hex digits), field 2 the transaction id (four), which an answer repeats.
/// A failure answer has code | 0x80 and a free text as its third field. Values travel as hex text
/// in lower case.
///
///   code  request (driver -> worker)                      answer (worker -> driver)
///    01   01 id {name count}...                           01 id | 81 id
///    02   02 id name count                                02 id value | 82 id text
///    03   03 id name type value                           03 id | 83 id text
///    04   04 id array index type count size offset        04 id value | 84 id text
///    05   05 id address port                              05 id | 85 id text
///
/// All functions are free of state: any thread.

/// Size of the buffers that both sides keep for one line.
const int kPipeLineSize = 4096;

/// Command codes, field 1 of a request.
enum LgxDriverCode {
    kLgxDriverSetSession = 0x01,
    kLgxDriverRead = 0x02,
    kLgxDriverWrite = 0x03,
    kLgxDriverReadArrayElements = 0x04,
    kLgxDriverIpSettingChanged = 0x05,
    kLgxDriverFailFlag = 0x80  ///< or-ed into the code of a failure answer
};

/// A tag and the number of its elements to read; the unit of session lists.
class LgxReadCmd {
 public:
    LgxReadCmd() : count(0) {}
    LgxReadCmd(const QString& tagName, int elementCount) : name(tagName), count(elementCount) {}

    QString name;
    int count;
};

// ---- builders ------------------------------------------------------------------------------
//
// Each writes one line into `dst`, which has room for `n` bytes, and a terminator after it.
// Returns the number of characters without the terminator, or -1 when the line with its
// terminator does not fit; then `dst` contains no line. Texts go out as Latin-1.
//
// A name, an address or an index text with a control character (below 0x20) gives -1 too: it
// would break the line apart. In an error text such a character becomes a blank.

/// Code 01. -1 also for an empty list. Unlike the others the line may fill `dst` to its last byte
/// and has no terminator.
int LgxDriverPackSetSessionCmd(char* dst, int n, unsigned short tid, const QList<LgxReadCmd>& list);
/// Code 01, or 81 when not `ok`.
int LgxDriverPackSetSessionRsp(char* dst, int n, unsigned short tid, bool ok);

int LgxDriverPackReadCmd(char* dst, int n, unsigned short tid, const QString& name, int count);
/// Code 02 with the value; an empty value is sent as one zero byte.
int LgxDriverPackReadRsp(char* dst, int n, unsigned short tid, const QByteArray& data);
int LgxDriverPackReadFailRsp(char* dst, int n, unsigned short tid, const QString& err);

/// Code 03; of the type only the low 8 bits are sent. An empty value makes an empty field.
int LgxDriverPackMicro800WriteCmd(char* dst, int n, unsigned short tid, const char* name,
                                  _LGX_Data_Type type, const QByteArray& data);
/// Code 03 in the form of larger controllers: the whole type, two integers more. Nothing here
/// sends it, and the Micro800 worker refuses it by its number of fields.
int LgxDriverPackCompactLogixWriteCmd(char* dst, int n, unsigned short tid, const char* name,
                                      _LGX_Data_Type type, const QByteArray& data, int a, int b);
/// Code 03 when `err` is null, else 83 with the text.
int LgxDriverPackWriteRsp(char* dst, int n, unsigned short tid, const char* err);

/// Code 04. `indexText` has its brackets; `arraySize` in elements, `byteOffset` in bytes.
int LgxDriverPackMicro800ReadArrayElementsCmd(char* dst, int n, unsigned short tid,
                                              const QString& arrayName, const QString& indexText,
                                              _LGX_Data_Type type, int elementCount, int arraySize,
                                              int byteOffset);
/// Code 04 with the value; an empty value is sent as one zero byte.
int LgxDriverPackReadArrayElementRsp(char* dst, int n, unsigned short tid, const QByteArray& data);
int LgxDriverPackReadArrayElementFailRsp(char* dst, int n, unsigned short tid, const QString& err);

/// Code 05.
int LgxDriverPackIpSettingChangedCmd(char* dst, int n, unsigned short tid, const QString& ip,
                                     unsigned short port);
/// Code 05 when `err` is null, else 85 with the text.
int LgxDriverPackIpSettingChangedRsp(char* dst, int n, unsigned short tid, const char* err);

/// `code` | 0x80 with the text.
int LgxDriverPackFailRsp(char* dst, int n, unsigned char code, unsigned short tid,
                         const QString& err);
/// `code` with the value; an empty value is sent as one zero byte.
int LgxDriverPackReadXXXRsp(char* dst, int n, unsigned char code, unsigned short tid,
                            const QByteArray& data);

// ---- checkers and decoders -----------------------------------------------------------------
//
// `buf` is the received text, ended by a zero byte. The answer looked for is at the start of
// the text or after a line feed; its first occurrence decides.
//
// `err` is set on failure only: the text of a failure answer, trimmed, or the text given below
// when neither answer is there (another transaction id, a torn line).

/// True for the plain answer "code, id". Else `err`, "invalid response(internal error2)".
bool LgxDriverCheckRsp(const char* buf, unsigned char code, unsigned short tid, QString& err);
bool LgxDriverCheckReadRsp(const char* buf, unsigned short tid, QString& err);
bool LgxDriverCheckWriteRsp(const char* buf, unsigned short tid, QString& err);
bool LgxDriverCheckIpSettingChangedRsp(const char* buf, unsigned short tid, QString& err);
/// True for the answer that accepts a session list; a refusal and a garbled text are alike.
bool LgxDriverCheckSetSessionRsp(const char* buf, unsigned short tid);

/// The bytes of a value answer: all that follows in the text, without what is no hex digit; an odd
/// first digit is a low nibble. Else empty with `err`, "invalid response(internal error)".
QByteArray LgxDriverReadXXXRspToByteArray(const char* buf, unsigned char code, unsigned short tid,
                                          QString& err);
QByteArray LgxDriverReadRspToByteArray(const char* buf, unsigned short tid, QString& err);
QByteArray LgxDriverReadArrayElementRspToByteArray(const char* buf, unsigned short tid,
                                                   QString& err);

#endif
