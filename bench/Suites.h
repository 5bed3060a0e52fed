// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bench {

void LibrarySuite();
void MemorySuite();
void FirstLoadSuite();
void PathsSuite();
void AnswersSuite();
void GrowthSuite();
void ServerSuite();

// What MemorySuite runs in a process of its own; prints what it measured.
int RunMemoryChild();

}  // namespace bench
