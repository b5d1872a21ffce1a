// SPDX-License-Identifier: GPL-2.0-or-later
// Counts what every library of the process takes from the C library.
#pragma once

namespace vidproc_obs_tests {

/// Blocks that this thread has taken so far.
long TakenBlocks();

}  // namespace vidproc_obs_tests
