#pragma once

namespace vqrx::log::i_buffer_full_notifier::v0 {

/// Receives notices of media components that the buffer of a named output pin was full.
class IBufferFullNotifier {
public:
    IBufferFullNotifier() = default;
    IBufferFullNotifier(const IBufferFullNotifier&) = delete;
    IBufferFullNotifier& operator=(const IBufferFullNotifier&) = delete;

    /// Starts counting for a pin, from 0; also for a pin that was registered before. Any thread.
    /// @param name  NUL-terminated, copied
    /// @throws std::bad_alloc
    virtual void RegisterPin(const char* name) = 0;

    /// Counts one notice of a pin. For a registered pin it logs at most one line in 10 seconds, and
    /// the line shows how many notices it stands for. For any other pin it logs every notice.
    /// Any thread. @param name  NUL-terminated, used only during the call
    virtual void NotifyBufferFull(const char* name) = 0;

    virtual ~IBufferFullNotifier() = default;
};

} // namespace vqrx::log::i_buffer_full_notifier::v0
