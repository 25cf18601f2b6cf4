// The end of a page renderer that stands still.
#pragma once

namespace skarnel {

/// Ends this process unless it is called again within that many milliseconds; 0 takes that back. By
/// the system's alarm, since the event loop may be what stands.
void endUnlessCalledWithin(int milliseconds);

}  // namespace skarnel
