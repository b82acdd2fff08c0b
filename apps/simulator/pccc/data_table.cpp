#include "apps/simulator/pccc/data_table.h"

namespace sim {

namespace {

const FileType kFileTypes[] = {
    {'S', 0x84, kPcccBitString, 2, 1, {}},
    {'B', 0x85, kPcccBitString, 2, 1, {}},
    {'T', 0x86, kPcccTimer, 2, 3, {"CTL", "PRE", "ACC"}},
    {'C', 0x87, kPcccCounter, 2, 3, {"CTL", "PRE", "ACC"}},
    {'R', 0x88, kPcccControl, 2, 3, {"CTL", "LEN", "POS"}},
    {'N', 0x89, kPcccInteger, 2, 1, {}},
    {'F', 0x8A, kPcccFloat, 4, 1, {}},
    {'L', 0x91, kPcccInteger, 4, 1, {}},
};

const struct {
    uint32_t number;
    char letter;
    uint32_t elements;
} kDefaultFiles[] = {
    {2, 'S', 32}, {3, 'B', 32},  {4, 'T', 16}, {5, 'C', 16},
    {6, 'R', 16}, {7, 'N', 512}, {8, 'F', 64},
};

}  // namespace

const FileType* findFileType(char letter) {
    for (const FileType& type : kFileTypes) {
        if (type.letter == letter) {
            return &type;
        }
    }
    return nullptr;
}

const FileType* findFileTypeByCode(uint8_t code) {
    for (const FileType& type : kFileTypes) {
        if (type.code == code) {
            return &type;
        }
    }
    return nullptr;
}

void DataTable::put(uint32_t number, const DataFile& file) {
    files.erase(number);
    files.emplace(number, file);
}

DataFile* DataTable::find(uint32_t number) {
    const auto found = files.find(number);
    return found == files.end() ? nullptr : &found->second;
}

void DataTable::putDefaultFiles() {
    for (const auto& one : kDefaultFiles) {
        put(one.number, DataFile(*findFileType(one.letter), one.elements));
    }
}

}  // namespace sim
