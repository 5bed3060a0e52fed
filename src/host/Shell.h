// SPDX-License-Identifier: Apache-2.0
// Commands that users write down, for the shell of the system.
#pragma once

#include <QProcess>
#include <QString>

namespace host {

// Starts the command, with the file, where one is named, as its last argument.
void StartInShell(QProcess& process, const QString& command, const QString& file = {});

// Which editor is there where nobody names one.
const char* UsualEditor();

}  // namespace host
