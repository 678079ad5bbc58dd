// Certificates of a test's own.
#ifndef ZELSENSORS_TESTS_HOST_TESTCERTIFICATE_H
#define ZELSENSORS_TESTS_HOST_TESTCERTIFICATE_H

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <string>

class TestCertificate {
  public:
    // For that host name, or of an authority where `issuer` is null; valid from now for so many days, or for a day that
    // was so many days ago. Throws std::runtime_error.
    TestCertificate(const std::string& name, const TestCertificate* issuer, int days);

    X509* certificate() const { return m_certificate.get(); }
    EVP_PKEY* key() const { return m_key.get(); }
    std::string pem() const;

  private:
    struct Closer {
        void operator()(X509* certificate) const { X509_free(certificate); }
        void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    };
    std::unique_ptr<EVP_PKEY, Closer> m_key;
    std::unique_ptr<X509, Closer> m_certificate;
};

#endif
