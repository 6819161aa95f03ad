#pragma once

#include "platform/Clock.h"

#include <map>

namespace vantle {

// A clock that moves only when told. advance() fires the timers that fall due in time order, each
// seeing now() at its own due time; the wall clock moves along with it but can also be set or
// jumped on its own (clock changes, DST, wake from sleep).
class ManualClock final : public Clock {
public:
    explicit ManualClock(QDateTime wallNow = QDateTime(QDate(2026, 11, 16), QTime(9, 0)));

    QDateTime now() const override { return m_wallNow; }
    Milliseconds monotonicNow() const override { return m_monotonicNow; }
    Timer singleShot(Milliseconds delay, std::function<void()> callback,
                     std::optional<Milliseconds> tolerance = std::nullopt) override {
        return schedule(delay, false, std::move(callback), tolerance);
    }
    Timer repeating(Milliseconds interval, std::function<void()> callback,
                    std::optional<Milliseconds> tolerance = std::nullopt) override {
        return schedule(interval, true, std::move(callback), tolerance);
    }

    void advance(Milliseconds duration);
    // Moves the wall clock only; timers are monotonic and do not fire.
    void setNow(const QDateTime& wallNow) { m_wallNow = wallNow; }
    // A suspend gap on a clock that counts it: wall and monotonic time both jump by `gap` with
    // nothing running on the way. Timers that fell due meanwhile then fire once each, in due
    // order, all seeing the time after the gap; a repeating one does not catch up on the
    // intervals it slept through.
    void jump(Milliseconds gap);

    std::size_t pendingTimerCount() const { return m_timers.size(); }
    // The tolerance the earliest pending timer was created with.
    std::optional<Milliseconds> nextTimerTolerance() const;

private:
    struct Entry {
        Milliseconds interval;
        bool repeats;
        std::function<void()> callback;
        std::optional<Milliseconds> tolerance;
        quint64 id;
    };
    class Handle;
    using Queue = std::multimap<Milliseconds, Entry>;

    Timer schedule(Milliseconds delay, bool repeats, std::function<void()> callback,
                   std::optional<Milliseconds> tolerance);
    Queue::iterator find(quint64 id);
    void cancel(quint64 id);
    // Runs a due timer taken off the queue at the current time.
    void fire(Queue::node_type node);

    QDateTime m_wallNow;
    Milliseconds m_monotonicNow{0};
    Queue m_timers;
    quint64 m_nextId = 1;
    std::shared_ptr<ManualClock*> m_self;
};

} // namespace vantle
