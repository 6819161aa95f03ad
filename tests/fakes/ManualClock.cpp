#include "fakes/ManualClock.h"

#include <algorithm>
#include <vector>

namespace vantle {

class ManualClock::Handle final : public TimerHandle {
public:
    Handle(std::weak_ptr<ManualClock*> clock, quint64 id)
        : m_clock(std::move(clock))
        , m_id(id) {}
    ~Handle() override {
        if (const auto clock = m_clock.lock()) {
            (*clock)->cancel(m_id);
        }
    }

private:
    std::weak_ptr<ManualClock*> m_clock;
    quint64 m_id;
};

ManualClock::ManualClock(QDateTime wallNow)
    : m_wallNow(std::move(wallNow))
    , m_self(std::make_shared<ManualClock*>(this)) {}

Timer ManualClock::schedule(Milliseconds delay, bool repeats, std::function<void()> callback,
                            std::optional<Milliseconds> tolerance) {
    const quint64 id = m_nextId++;
    m_timers.emplace(m_monotonicNow + std::max(delay, Milliseconds(0)),
                     Entry{delay, repeats, std::move(callback), tolerance, id});
    return std::make_unique<Handle>(m_self, id);
}

ManualClock::Queue::iterator ManualClock::find(quint64 id) {
    return std::find_if(m_timers.begin(), m_timers.end(),
                        [id](const auto& entry) { return entry.second.id == id; });
}

void ManualClock::cancel(quint64 id) {
    if (const auto it = find(id); it != m_timers.end()) {
        m_timers.erase(it);
    }
}

void ManualClock::fire(Queue::node_type node) {
    const std::function<void()> callback = node.mapped().callback;
    if (node.mapped().repeats) {
        // Re-queue before running, so the callback may cancel its own timer.
        node.key() = m_monotonicNow + std::max(node.mapped().interval, Milliseconds(1));
        m_timers.insert(std::move(node));
    }
    callback();
}

void ManualClock::advance(Milliseconds duration) {
    const Milliseconds target = m_monotonicNow + duration;
    // Timers equal in due time fire in creation order (multimap keeps insertion order).
    while (!m_timers.empty() && m_timers.begin()->first <= target) {
        auto node = m_timers.extract(m_timers.begin());
        const Milliseconds due = node.key();
        m_wallNow = m_wallNow.addMSecs((due - m_monotonicNow).count());
        m_monotonicNow = due;
        fire(std::move(node));
    }
    m_wallNow = m_wallNow.addMSecs((target - m_monotonicNow).count());
    m_monotonicNow = target;
}

void ManualClock::jump(Milliseconds gap) {
    m_wallNow = m_wallNow.addMSecs(gap.count());
    m_monotonicNow += std::max(gap, Milliseconds(0));
    // Collected first: a callback may create or cancel timers, which then wait for their turn.
    std::vector<quint64> overdue;
    for (const auto& [due, entry] : m_timers) {
        if (due > m_monotonicNow) {
            break;
        }
        overdue.push_back(entry.id);
    }
    for (const quint64 id : overdue) {
        // An earlier callback may have cancelled it.
        if (const auto it = find(id); it != m_timers.end()) {
            fire(m_timers.extract(it));
        }
    }
}

std::optional<Milliseconds> ManualClock::nextTimerTolerance() const {
    return m_timers.empty() ? std::nullopt : m_timers.begin()->second.tolerance;
}

} // namespace vantle
