#ifndef EIP_RECORD_RECORD_FOLDER_H
#define EIP_RECORD_RECORD_FOLDER_H

#include <ctime>
#include <string>
#include <vector>

/// The folder with the recordings: YYYYMMDD-HHMMSS-WHY.pcapng, in local time.
///
/// A recording is written under a temporary name and gets its own when it is whole and on the
/// disk. Only files with names of this form count against the limits or are removed. Several
/// objects, also of several processes, may use one folder. One thread at a time uses an object.
class RecordFolder {
 public:
    explicit RecordFolder(const std::string& path);
    /// Discards a file that was begun.
    ~RecordFolder();

    /// Makes the folder if there is none, removes the files of killed processes, and begins a
    /// file. This and the following are false with the reason in `problem`, and nothing is left of
    /// the file.
    bool begin(std::string* problem);
    bool write(const std::vector<unsigned char>& bytes, std::string* problem);
    /// Gives the file its name and removes the oldest recordings that are too many.
    bool finish(time_t when, const std::string& why, std::string* problem);

    /// True once for each file `dump` that was put into the folder; it is removed. Each object
    /// sees a file that another object of this process has removed.
    bool dumpAsked();

    /// At most so many recordings stay, and so many bytes of them.
    static const int kMostFiles = 10;
    static const long long kMostBytes = 20 * 1024 * 1024;

 private:
    RecordFolder(const RecordFolder&) = delete;
    RecordFolder& operator=(const RecordFolder&) = delete;

    bool fail(const std::string& what, std::string* problem);
    void giveUp();
    void removeLeftovers() const;
    void makeRoom(const std::string& newest) const;

    const std::string path;
    std::string partName;  ///< of the file that was begun
    int fd;                ///< -1 without one
    unsigned dumpsSeen;
};

#endif
