#ifndef EIP_RECORD_RECORD_SETTINGS_H
#define EIP_RECORD_RECORD_SETTINGS_H

#include <cstddef>
#include <string>

/// What the flight recorder keeps and where it writes.
struct RecordSettings {
    RecordSettings();
    std::string folder;  ///< empty: nothing is recorded
    size_t messages;     ///< kept in memory, and as many events
    size_t bytes;        ///< of memory for both
};

const size_t kDefaultRecordMessages = 4096;
const size_t kDefaultRecordBytes = 1024 * 1024;

/// Reads a size: a number of messages ("1000"), an amount of memory ("256K", "2M"), or both with a
/// comma between them. Messages are 16 to 100,000, memory is 64K to 64M. False, and `settings`
/// untouched, for anything else. Any thread.
bool parseRecordSize(const std::string& text, RecordSettings* settings);

/// The settings in the environment: MICRO800_RECORD (a folder) and MICRO800_RECORD_SIZE, which is
/// ignored when it is no size. Not to be called while another thread changes the environment.
RecordSettings recordSettingsFromEnvironment();

#endif
