#ifndef TESTS_UNIT_APPS_MICRO800_CONSOLE_PROBE_H
#define TESTS_UNIT_APPS_MICRO800_CONSOLE_PROBE_H

#include <QString>
#include <cstdio>
#include <cstdlib>

#include "apps/micro800/terminal/console.h"

/// A console whose lines a test can look at.
class ConsoleProbe {
 public:
    ConsoleProbe()
        : outFile(open_memstream(&outText, &outSize)),
          errFile(open_memstream(&errText, &errSize)),
          target(outFile, errFile) {}
    ~ConsoleProbe() {
        std::fclose(outFile);
        std::fclose(errFile);
        std::free(outText);
        std::free(errText);
    }
    ConsoleProbe(const ConsoleProbe&) = delete;
    ConsoleProbe& operator=(const ConsoleProbe&) = delete;

    Console& console() { return target; }
    QString out() { return text(outFile, outText, outSize); }
    QString err() { return text(errFile, errText, errSize); }

 private:
    static QString text(std::FILE* file, const char* const& buffer, const std::size_t& size) {
        std::fflush(file);
        return QString::fromUtf8(buffer, static_cast<int>(size));
    }

    char* outText = nullptr;
    char* errText = nullptr;
    std::size_t outSize = 0;
    std::size_t errSize = 0;
    std::FILE* outFile;
    std::FILE* errFile;
    Console target;
};

#endif
