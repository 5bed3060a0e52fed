// SPDX-License-Identifier: Apache-2.0
// A host of the plugin for fuzz targets: the platform's seams in place of a server, and every reading call.
#pragma once

#include <string>

namespace fuzz {

// A logged-in user, some elements and areas, a silent log; made once for the process.
void PrepareHost();

// What every request to the server is answered with; empty: nobody answers.
void AnswerRequestsWith(const std::string& reply);

// Empties the library and loads these documents. A log-in is not repeated.
void Load(const std::string& groups, const std::string& views);
// The same with a small site: groups 1 and 2 (in 1), views 5 to 7.
void LoadSmallSite();

// Asks for everything that the library holds and checks that each response is well-formed JSON.
void ReadEverything();

// Stops the fuzzer unless `response` is JSON.
void RequireJson(const std::string& response);

}  // namespace fuzz
