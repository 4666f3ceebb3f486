#pragma once

namespace vqrx::log::i_buffer_full_notifier::v0 {

/// Lets media components report that the buffer of a named output pin was full.
class IBufferFullNotifier {
public:
    IBufferFullNotifier() = default;
    IBufferFullNotifier(const IBufferFullNotifier&) = delete;
    IBufferFullNotifier& operator=(const IBufferFullNotifier&) = delete;

    /// Starts (or starts anew) counting for a pin. Any thread. @param name NUL-terminated, copied
    virtual void RegisterPin(const char* name) = 0;

    /// One more full buffer on a pin; logged at a limited rate. Any thread.
    virtual void NotifyBufferFull(const char* name) = 0;

    virtual ~IBufferFullNotifier() = default;
};

} // namespace vqrx::log::i_buffer_full_notifier::v0
