// SPDX-License-Identifier: Apache-2.0
// Passwords, tokens and other things nobody shall guess. Any thread.
#pragma once

#include <string>

namespace server {

// REQUIRES: called once before anything else here; throws std::runtime_error when there is no randomness.
void InitSecrets();

// An Argon2id hash with its parameters and salt. Takes some tens of milliseconds and 64 MiB.
std::string HashPassword(const std::string& password);
// False for an empty `hash`, in the time a real one would have taken.
bool VerifyPassword(const std::string& hash, const std::string& password);

std::string MakePassword();                                   // 20 letters and digits
std::string MakeToken();                                      // 256 random bits as text
std::string Digest(const std::string& text);                  // BLAKE2b, hexadecimal; what is stored of a token
bool SameDigest(const std::string& a, const std::string& b);  // in constant time
std::string MakeGuid();

}  // namespace server
