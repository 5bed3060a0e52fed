// SPDX-License-Identifier: Apache-2.0
#include "server/http/Addresses.h"

#include <stdexcept>

#include "server/http/RequestHead.h"

namespace server {

namespace ip = boost::asio::ip;

namespace {

// "1.2.3.4", "1.2.3.4:567", "2001:db8::1", "[2001:db8::1]:567".
std::optional<Address> ParseAddress(std::string_view text) {
  if (text.starts_with('[')) {
    text = text.substr(1, text.find(']') - 1);
  } else if (text.find(':') == text.rfind(':')) {
    text = text.substr(0, text.find(':'));
  }
  boost::system::error_code error;
  const Address address = ip::make_address(std::string(text), error);
  return error ? std::nullopt : std::optional(Plain(address));
}

}  // namespace

Address Plain(const Address& address) {
  return address.is_v6() && address.to_v6().is_v4_mapped() ? ip::make_address_v4(ip::v4_mapped, address.to_v6())
                                                           : address;
}

std::string NetworkOf(const Address& address) {
  if (address.is_v4()) return address.to_string();
  auto bytes = address.to_v6().to_bytes();
  std::fill(bytes.begin() + 8, bytes.end(), 0);
  return ip::address_v6(bytes).to_string() + "/64";
}

TrustedProxies::TrustedProxies(const std::vector<std::string>& addresses) {
  for (const std::string& text : addresses) {
    boost::system::error_code error;
    m_addresses.insert(Plain(ip::make_address(text, error)));
    if (error) throw std::runtime_error("a trusted proxy is an address, not " + text);
  }
}

Address TrustedProxies::Client(const Address& peer, std::string_view forwardedFor) const {
  Address client = peer;
  while (Has(client) && !forwardedFor.empty()) {
    const size_t comma = forwardedFor.rfind(',');
    const auto next = ParseAddress(Trimmed(forwardedFor.substr(comma == std::string_view::npos ? 0 : comma + 1)));
    if (!next) break;
    client = *next;
    forwardedFor = forwardedFor.substr(0, comma == std::string_view::npos ? 0 : comma);
  }
  return client;
}

}  // namespace server
