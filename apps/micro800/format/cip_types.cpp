#include "apps/micro800/format/cip_types.h"

namespace {

struct TypeName {
    int code;
    const char* name;
};

const int kStructure = 0xA0;
const int kAbbreviatedStructure = 0x02A0;
const int kShortString = 0xDA;

const TypeName kTypeNames[] = {
    {0xC1, "BOOL"},
    {0xC2, "SINT"},
    {0xC3, "INT"},
    {0xC4, "DINT"},
    {0xC5, "LINT"},
    {0xC6, "USINT"},
    {0xC7, "UINT"},
    {0xC8, "UDINT"},
    {0xC9, "ULINT"},
    {0xCA, "REAL"},
    {0xCB, "LREAL"},
    {0xCC, "STIME"},
    {0xCD, "DATE"},
    {0xCE, "TIME_OF_DAY"},
    {0xCF, "DATE_AND_TIME"},
    {0xD0, "STRING (two-byte length)"},
    {0xD1, "BYTE"},
    {0xD2, "WORD"},
    {0xD3, "DWORD"},
    {0xD4, "LWORD"},
    {0xD5, "STRING2"},
    {0xD6, "FTIME"},
    {0xD7, "LTIME"},
    {0xD8, "ITIME"},
    {0xD9, "STRINGN"},
    {kShortString, "STRING"},
    {0xDB, "TIME"},
    {0xDC, "EPATH"},
    {0xDD, "ENGUNIT"},
    {kStructure, "a structure"},
    {kAbbreviatedStructure, "a structure"},
};

}  // namespace

QString cipTypeName(int code) {
    for (const TypeName& row : kTypeNames) {
        if (row.code == code) {
            return QLatin1String(row.name);
        }
    }
    return QStringLiteral("type 0x%1").arg(QString::number(code, 16).toUpper());
}

const TagType* tagTypeForCode(int code) {
    return tagTypeByPrefix(cipTypeName(code) + QLatin1Char('0'));
}
