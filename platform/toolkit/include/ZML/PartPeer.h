#pragma once

#include "ZML/PartTypes.h"

namespace ZML {

class Part;

// The backend's side of a part: a realised widget that mirrors the part's state. The part calls
// Refresh after each change of its state; the peer reads what it needs from the part. A part
// without a peer (the headless default) simply keeps its state.
class PartPeer {
public:
    virtual ~PartPeer() = default;
    // Called on the user-interface thread after `change` was made to `part`. Must not destroy
    // the part.
    virtual void Refresh(Part& part, PartChange change) = 0;
};

}  // namespace ZML
