// SPDX-License-Identifier: MIT
#pragma once

/// What happens when the X server goes while the program runs: it ends with code 1 and one line that says why.
namespace DisplayLoss {

/// Once the application object is made, which chooses the display. GUI thread.
///
/// The toolkit and the X libraries call exit() when the server goes, on whatever thread notices first, in the middle of
/// everything. That destroys the objects of static storage under the feet of the threads that go on, which ends in a
/// crash. So from now on the program's own exit() takes the place of the C library's for them: it writes what is left
/// of the log and leaves everything else to the operating system. The return from main() stays what it is.
void prepare();

} // namespace DisplayLoss
