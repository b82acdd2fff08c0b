#ifndef TESTS_UNIT_APPS_MICRO800_CONSOLE_PROBE_H
#define TESTS_UNIT_APPS_MICRO800_CONSOLE_PROBE_H

#include <QString>
#include <cstdio>
#include <cstdlib>

#include "apps/micro800/console.h"

/// A console whose lines a test can look at.
class ConsoleProbe {
 public:
    ConsoleProbe()
        : outFile_(open_memstream(&outText_, &outSize_)),
          errFile_(open_memstream(&errText_, &errSize_)),
          console_(outFile_, errFile_) {}
    ~ConsoleProbe() {
        std::fclose(outFile_);
        std::fclose(errFile_);
        std::free(outText_);
        std::free(errText_);
    }
    ConsoleProbe(const ConsoleProbe&) = delete;
    ConsoleProbe& operator=(const ConsoleProbe&) = delete;

    Console& console() { return console_; }
    QString out() { return text(outFile_, outText_, outSize_); }
    QString err() { return text(errFile_, errText_, errSize_); }

 private:
    static QString text(std::FILE* file, char*& buffer, std::size_t& size) {
        std::fflush(file);
        return QString::fromUtf8(buffer, static_cast<int>(size));
    }

    char* outText_ = nullptr;
    char* errText_ = nullptr;
    std::size_t outSize_ = 0;
    std::size_t errSize_ = 0;
    std::FILE* outFile_;
    std::FILE* errFile_;
    Console console_;
};

#endif
