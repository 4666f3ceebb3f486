#include "EndInRounds.h"

namespace vqrx::setup::v0 {

void EndInRounds(const EndActions& actions)
{
    for (bool lookAgain = true; lookAgain;) {
        const bool ran = actions.endSupervisors();
        lookAgain = actions.endGuards(ran);
    }
}

} // namespace vqrx::setup::v0
