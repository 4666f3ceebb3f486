#pragma once

namespace vqrx::test {

/// Counts the live objects of a stand-in, so that a test sees an object that was not released.
/// @tparam Script  function that returns the script of the stand-in; its liveObjects is the count
template <typename Base, auto Script>
class Tracked : public Base {
public:
    Tracked() { ++Script().liveObjects; }

protected:
    ~Tracked() override { --Script().liveObjects; }
};

} // namespace vqrx::test
