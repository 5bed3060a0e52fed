// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QProcess>

#include "system/Program.h"

namespace test_programs {

// Before it is started: on Windows a process is asked to stop by an event of its console.
inline void MakeStoppable([[maybe_unused]] QProcess& process) {
#ifdef Q_OS_WIN
  process.setCreateProcessArgumentsModifier([](auto* made) { made->flags = FlagsOfStoppable(made->flags); });
#endif
}

// Kills it where it cannot be asked.
inline void AskToStop(QProcess& process) {
  if (process.state() == QProcess::Running && !AskToStop(process.processId())) process.kill();
}

}  // namespace test_programs
