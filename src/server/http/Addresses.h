// SPDX-License-Identifier: Apache-2.0
// Who a request came from: the address of its connection, or what a trusted proxy says of it.
#pragma once

#include <boost/asio/ip/address.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace server {

using Address = boost::asio::ip::address;

// An IPv4 address that is written as an IPv6 one becomes what it is.
Address Plain(const Address& address);

// What limits count by: an IPv4 address, or the first 64 bits of an IPv6 one, which are one site's.
std::string NetworkOf(const Address& address);

class TrustedProxies {
 public:
  // Throws std::runtime_error with one plain line where one is no address.
  explicit TrustedProxies(const std::vector<std::string>& addresses);

  bool Has(const Address& address) const { return m_addresses.count(address) != 0; }
  // The rightmost address of X-Forwarded-For that is no trusted proxy; the last that one of them vouches for where
  // there is none, and `peer` where that is no trusted proxy itself.
  Address Client(const Address& peer, std::string_view forwardedFor) const;

 private:
  std::set<Address> m_addresses;
};

}  // namespace server
