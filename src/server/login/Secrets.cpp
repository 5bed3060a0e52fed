// SPDX-License-Identifier: Apache-2.0
#include "server/login/Secrets.h"

#include <sodium.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string_view>

namespace server {

void InitSecrets() {
  if (sodium_init() < 0) throw std::runtime_error("the system gives no random numbers");
}

std::string HashPassword(const std::string& password) {
  std::array<char, crypto_pwhash_STRBYTES> hash{};
  if (crypto_pwhash_str_alg(hash.data(), password.data(), password.size(), crypto_pwhash_OPSLIMIT_INTERACTIVE,
                            crypto_pwhash_MEMLIMIT_INTERACTIVE, crypto_pwhash_ALG_ARGON2ID13) != 0) {
    throw std::runtime_error("not enough memory to hash a password");
  }
  return hash.data();
}

namespace {

// Not by crypto_pwhash_str_verify, to which a hash that it had no memory for is one that does not match.
bool Matches(const std::string& hash, const std::string& password) {
  using Salt = std::array<unsigned char, crypto_pwhash_SALTBYTES>;
  using Hash = std::array<unsigned char, 32>;
  unsigned int memory = 0, rounds = 0;
  char saltText[64] = "", hashText[64] = "";
  if (std::sscanf(hash.c_str(), "$argon2id$v=19$m=%u,t=%u,p=1$%63[^$]$%63s", &memory, &rounds, saltText, hashText) !=
      4) {
    return false;
  }
  Salt salt{};
  Hash expected{}, made{};
  const auto decode = [](auto& bytes, const char* text) {
    size_t size = 0;
    return sodium_base642bin(bytes.data(), bytes.size(), text, std::strlen(text), nullptr, &size, nullptr,
                             sodium_base64_VARIANT_ORIGINAL_NO_PADDING) == 0 &&
           size == bytes.size();
  };
  if (!decode(salt, saltText) || !decode(expected, hashText)) return false;
  if (crypto_pwhash(made.data(), made.size(), password.data(), password.size(), salt.data(), rounds,
                    size_t{memory} * 1024, crypto_pwhash_ALG_ARGON2ID13) != 0) {
    throw std::bad_alloc();
  }
  return sodium_memcmp(made.data(), expected.data(), made.size()) == 0;
}

}  // namespace

bool VerifyPassword(const std::string& hash, const std::string& password) {
  static const std::string nobodysHash = HashPassword(MakePassword());
  const std::string& used = hash.empty() ? nobodysHash : hash;
  return Matches(used, password) && !hash.empty();
}

std::string MakePassword() {
  constexpr std::string_view kLetters = "abcdefghijkmnopqrstuvwxyzABCDEFGHJKLMNPQRSTUVWXYZ23456789";
  std::string password(20, '\0');
  for (char& c : password) c = kLetters[randombytes_uniform(static_cast<uint32_t>(kLetters.size()))];
  return password;
}

std::string MakeToken() {
  std::array<unsigned char, 32> bytes{};
  randombytes_buf(bytes.data(), bytes.size());
  std::array<char, sodium_base64_ENCODED_LEN(32, sodium_base64_VARIANT_URLSAFE_NO_PADDING)> text{};
  return sodium_bin2base64(text.data(), text.size(), bytes.data(), bytes.size(),
                           sodium_base64_VARIANT_URLSAFE_NO_PADDING);
}

std::string Digest(const std::string& text) {
  std::array<unsigned char, crypto_generichash_BYTES> hash{};
  crypto_generichash(hash.data(), hash.size(), reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                     nullptr, 0);
  std::array<char, crypto_generichash_BYTES * 2 + 1> hex{};
  return sodium_bin2hex(hex.data(), hex.size(), hash.data(), hash.size());
}

bool SameDigest(const std::string& a, const std::string& b) {
  return a.size() == b.size() && sodium_memcmp(a.data(), b.data(), a.size()) == 0;
}

std::string MakeGuid() {
  std::array<unsigned char, 16> bytes{};
  randombytes_buf(bytes.data(), bytes.size());
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);  // a random GUID, version 4
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
  std::array<char, 33> hex{};
  sodium_bin2hex(hex.data(), hex.size(), bytes.data(), bytes.size());
  const std::string digits = hex.data();
  return digits.substr(0, 8) + "-" + digits.substr(8, 4) + "-" + digits.substr(12, 4) + "-" + digits.substr(16, 4) +
         "-" + digits.substr(20);
}

}  // namespace server
