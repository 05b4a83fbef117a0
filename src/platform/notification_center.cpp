#include "platform/notification_center.hpp"

#include <algorithm>

#include "platform/run_loop.hpp"

namespace vx {

ObserverToken::ObserverToken(ObserverToken&& other) noexcept
    : m_center(std::exchange(other.m_center, nullptr)), m_id(std::exchange(other.m_id, 0)) {}

ObserverToken& ObserverToken::operator=(ObserverToken&& other) noexcept {
    if (this != &other) {
        reset();
        m_center = std::exchange(other.m_center, nullptr);
        m_id = std::exchange(other.m_id, 0);
    }
    return *this;
}

ObserverToken::~ObserverToken() { reset(); }

void ObserverToken::reset() {
    if (m_center && m_id) m_center->remove(m_id);
    m_center = nullptr;
    m_id = 0;
}

NotificationCenter& NotificationCenter::defaultCenter() {
    static NotificationCenter center;
    return center;
}

ObserverToken NotificationCenter::addObserver(std::string name, const void* object, Observer observer,
                                              RunLoop* deliverOn) {
    std::lock_guard lock(m_mutex);
    const uint64_t id = m_nextId++;
    m_entries.push_back({id, std::move(name), object, std::make_shared<Observer>(std::move(observer)), deliverOn});
    return ObserverToken(this, id);
}

void NotificationCenter::removeObserver(ObserverToken& token) { token.reset(); }

void NotificationCenter::remove(uint64_t id) {
    std::lock_guard lock(m_mutex);
    std::erase_if(m_entries, [id](const Entry& entry) { return entry.id == id; });
}

void NotificationCenter::post(const Notification& notification) {
    // Observers are called outside the lock: they may add or remove observers, or post again.
    std::vector<Entry> matching;
    {
        std::lock_guard lock(m_mutex);
        for (const auto& entry : m_entries)
            if ((entry.name.empty() || entry.name == notification.name) &&
                (!entry.object || entry.object == notification.object))
                matching.push_back(entry);
    }
    for (auto& entry : matching) {
        {
            // One observer may remove another (and free what it captured) while this post runs.
            std::lock_guard lock(m_mutex);
            if (std::none_of(m_entries.begin(), m_entries.end(), [&](const Entry& e) { return e.id == entry.id; }))
                continue;
        }
        if (entry.loop)
            entry.loop->performBlock([observer = entry.observer, notification] { (*observer)(notification); });
        else
            (*entry.observer)(notification);
    }
}

void NotificationCenter::postNotificationName(std::string name, const void* object, PropertyValue::Dictionary userInfo) {
    post(Notification{std::move(name), object, std::move(userInfo)});
}

}  // namespace vx
