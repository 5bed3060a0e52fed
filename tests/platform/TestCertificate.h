// SPDX-License-Identifier: Apache-2.0
// Certificates for a server on 127.0.0.1, made when a test runs.
#pragma once

#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <cstdio>
#include <memory>
#include <string>

namespace testing_support {

struct Certificate {
  const char* name = "IP:127.0.0.1";
  long from = -60;  // seconds from now
  long to = 3600;
};

// A key and a certificate that it signs itself, both in one file.
inline void MakeCertificate(const std::string& file, const Certificate& what) {
  const std::shared_ptr<EVP_PKEY> key(EVP_RSA_gen(2048), EVP_PKEY_free);
  const std::shared_ptr<X509> certificate(X509_new(), X509_free);
  X509_set_version(certificate.get(), 2);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
  // It vouches for itself: OpenSSL finds the issuer by its name.
  X509_NAME* const subject = X509_get_subject_name(certificate.get());
  X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("test server"), -1, -1,
                             0);
  X509_set_issuer_name(certificate.get(), subject);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), what.from);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), what.to);
  X509_set_pubkey(certificate.get(), key.get());
  const std::shared_ptr<X509_EXTENSION> name(X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, what.name),
                                             X509_EXTENSION_free);
  X509_add_ext(certificate.get(), name.get(), -1);
  X509_sign(certificate.get(), key.get(), EVP_sha256());
  const std::shared_ptr<std::FILE> out(std::fopen(file.c_str(), "w"), std::fclose);
  PEM_write_X509(out.get(), certificate.get());
  PEM_write_PrivateKey(out.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
}

}  // namespace testing_support
