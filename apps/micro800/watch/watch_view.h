#ifndef APPS_MICRO800_WATCH_WATCH_VIEW_H
#define APPS_MICRO800_WATCH_WATCH_VIEW_H

#include <QString>
#include <memory>

#include "apps/micro800/terminal/console.h"
#include "apps/micro800/watch/watch_model.h"

/// How a watch shows itself. Times are the model's.
class WatchView {
 public:
    virtual ~WatchView() = default;

    /// A read brought something new about this tag.
    virtual void tell(const WatchedTag& tag, WatchEvent event) = 0;
    /// Called about ten times per second and after every round of reads.
    virtual void refresh(const WatchModel& model, qint64 now) = 0;
    /// The watch is over. The view leaves its place to what follows.
    virtual void end(const WatchModel& model, qint64 now) = 0;

    /// A descriptor that becomes readable when the user presses a key; -1 when there is none.
    virtual int keyDescriptor() const { return -1; }
    /// Takes the keys pressed. True when one of them asks for the end.
    virtual bool takeKeys() { return false; }
};

/// One line a change with the time of day; failures as the driver words them, to the error stream.
/// Sums up at the end unless `quiet`.
std::unique_ptr<WatchView> makeLinesView(Console& console, bool quiet, NumberBase base);

/// One JSON object a change or failure.
std::unique_ptr<WatchView> makeJsonView(Console& console, NumberBase base);

/// One CSV record a change or failure, after one with the names of the fields.
std::unique_ptr<WatchView> makeCsvView(Console& console, NumberBase base);

/// A table that fills the terminal and refreshes in place. Null when this build has none, or when
/// the terminal cannot show it. `title` names the controller.
std::unique_ptr<WatchView> makeTableView(Console& console, const QString& title, NumberBase base);

#endif
