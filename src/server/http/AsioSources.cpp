// SPDX-License-Identifier: Apache-2.0
// The code of Asio that is no template, once for the server instead of in each of its files.
#include <boost/asio/impl/src.hpp>
#include <boost/asio/ssl/impl/src.hpp>
