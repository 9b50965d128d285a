// SPDX-License-Identifier: MIT
// A library that is no plug-in at all.
extern "C" __attribute__((visibility("default"))) int kelvoTestHelper()
{
    return 0;
}
