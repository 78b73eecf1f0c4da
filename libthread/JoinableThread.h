#pragma once

#include "libthread/Thread.h"

namespace Vostrel::libthread {

/// A Thread that its owner joins.
class JoinableThread : public Thread {
public:
    JoinableThread(const std::function<void()>& body, const std::string& name)
        : Thread(body, name, true) {}
};

} // namespace Vostrel::libthread
