#include "com/ClientApartment.h"

#include "com/UnmarshalPolicy.h"

namespace vqrx::system::com::v1 {

ClientApartment::ClientApartment()
{
    static const HRESULT first = RequireTrustedUnmarshalers(); // of the process, not of the thread
    static_cast<void>(first);
}

} // namespace vqrx::system::com::v1
