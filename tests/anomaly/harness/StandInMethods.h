#pragma once

namespace vqrx::test::anomaly {

/// Puts thunks into the table of methods of each stand-in, that is of each class of this program
/// that lies in vqrx::test and derives from IUnknown. AddRef and Release stay as they are: they
/// cannot fail. Call it once.
void ReplaceStandInMethods();

} // namespace vqrx::test::anomaly
