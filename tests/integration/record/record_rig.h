#ifndef TESTS_INTEGRATION_RECORD_RECORD_RIG_H
#define TESTS_INTEGRATION_RECORD_RECORD_RIG_H

#include <gtest/gtest.h>

#include <QStringList>
#include <QTemporaryDir>

#include "integration/driver_rig.h"
#include "support/capture_file.h"

/// Tests whose drivers record into a folder of their own.
class RecordTest : public ::testing::Test {
 protected:
    void SetUp() override;
    void TearDown() override;

    /// The recordings so far, oldest first.
    QStringList recordings() const;
    QString pathOf(const QString& name) const { return folder.filePath(name); }
    /// Reads one; fails the test when it is not whole.
    CaptureFile read(const QString& name) const;
    /// Waits for a recording for this reason and gives its name.
    QString waitForRecording(const QString& why) const;

    /// What tshark prints of the packets that the filter lets through, a line each: the fields.
    static QStringList tshark(const QString& path, const QString& filter,
                              const QStringList& fields);
    /// Fails the test when tshark finds a packet broken or the TCP streams incomplete.
    void expectSound(const QString& name) const;

    QTemporaryDir folder;
};

#endif
