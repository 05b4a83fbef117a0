// NotificationCenter: in-process broadcasts by name. A poster names the notification and the object
// it concerns (a document, say) and may add user info; observers registered for that name (or for
// every name) and that object (or any object) are called with it.
//
// Observers run synchronously on the posting thread, in the order they were added, unless they were
// added with a run loop: then the call is posted to that loop. The token returned by addObserver
// removes the observer when it is destroyed (or by hand with removeObserver).
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/property_list.hpp"

namespace vx {

class RunLoop;

struct Notification {
    std::string name;
    const void* object = nullptr;  // identity only: the center never dereferences it
    PropertyValue::Dictionary userInfo;
};

class NotificationCenter;

// Keeps an observer registered for as long as it lives.
class ObserverToken {
public:
    ObserverToken() = default;
    ObserverToken(ObserverToken&& other) noexcept;
    ObserverToken& operator=(ObserverToken&& other) noexcept;
    ~ObserverToken();
    void reset();
    explicit operator bool() const { return m_id != 0; }

private:
    friend class NotificationCenter;
    ObserverToken(NotificationCenter* center, uint64_t id) : m_center(center), m_id(id) {}
    NotificationCenter* m_center = nullptr;
    uint64_t m_id = 0;
};

class NotificationCenter {
public:
    using Observer = std::function<void(const Notification&)>;

    static NotificationCenter& defaultCenter();

    NotificationCenter() = default;
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    // An empty name observes every notification; a null object observes every poster.
    [[nodiscard]] ObserverToken addObserver(std::string name, const void* object, Observer observer,
                                            RunLoop* deliverOn = nullptr);
    void removeObserver(ObserverToken& token);

    void post(const Notification& notification);
    void postNotificationName(std::string name, const void* object, PropertyValue::Dictionary userInfo = {});

private:
    friend class ObserverToken;
    struct Entry {
        uint64_t id;
        std::string name;
        const void* object;
        std::shared_ptr<Observer> observer;
        RunLoop* loop;
    };
    void remove(uint64_t id);

    std::mutex m_mutex;
    std::vector<Entry> m_entries;
    uint64_t m_nextId = 1;
};

}  // namespace vx
