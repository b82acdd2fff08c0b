#ifndef APPS_SIMULATOR_PCCC_DATA_TABLE_H
#define APPS_SIMULATOR_PCCC_DATA_TABLE_H

#include <map>
#include <string>

#include "apps/simulator/wire/bytes.h"

// The data table of controllers of the PLC-5 and SLC 500 kind, which PCCC commands read and write:
// files of elements, known by their numbers (DF1 Protocol and Command Set, 1770-6.5.16).

namespace sim {

/// Types of the typed commands' data.
enum PcccDataType : uint32_t {
    kPcccBitString = 2,
    kPcccInteger = 4,
    kPcccTimer = 5,
    kPcccCounter = 6,
    kPcccControl = 7,
    kPcccFloat = 8,
    kPcccArray = 9,
    kPcccLastSmall = kPcccArray,
    kPcccAddress = 15,
    kPcccBcd = 16,
};

const size_t kPcccWord = 2;

/// What the elements of a data file are.
struct FileType {
    char letter;           ///< in addresses: N7:0
    uint8_t code;          ///< in commands with three address fields
    PcccDataType data;     ///< in typed commands
    size_t unit;           ///< bytes of one number
    size_t units;          ///< numbers in an element; 3 are control word, preset, accumulator
    const char* words[3];  ///< names of an element's words, null without names
    size_t elementSize() const { return unit * units; }
    bool isStructure() const { return units > 1; }
};

/// Null for any other letter (upper case) or code.
const FileType* findFileType(char letter);
const FileType* findFileTypeByCode(uint8_t code);

const uint32_t kMaxFileNumber = 999;
const uint32_t kMaxFileElements = 65535;

/// One file: its elements one after the other, little-endian.
struct DataFile {
    DataFile(const FileType& fileType, uint32_t elementCount)
        : type(&fileType), elements(elementCount), bytes(elementCount * fileType.elementSize()) {}

    const FileType* type;
    uint32_t elements;
    Bytes bytes;
};

class DataTable {
 public:
    /// Takes the place of a file of this number.
    void put(uint32_t number, const DataFile& file);
    /// Null when there is none. Good until the file is replaced.
    DataFile* find(uint32_t number);
    /// Takes the files that a controller has at first, all zero: S2, B3, T4, C5, R6, N7 and F8.
    void putDefaultFiles();

 private:
    std::map<uint32_t, DataFile> files;
};

}  // namespace sim

#endif
