// Reaping children that nobody waits for, on the main run loop.
#pragma once

#include <memory>

namespace vx {

class ChildProcess;

// Watches the child from the main run loop; once it has exited, polls it once there (which
// reaps it and keeps its status) and stops watching.
void reapWhenExited(std::shared_ptr<ChildProcess> child);

}  // namespace vx
