#include "TestCertificate.h"

#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <stdexcept>

namespace {

constexpr long SECONDS_PER_DAY = 86400;

void require(bool isDone) {
    if (!isDone) throw std::runtime_error("the certificate cannot be made");
}

void addExtension(X509* certificate, int kind, const std::string& value) {
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, nullptr, kind, value.c_str());
    require(extension != nullptr && X509_add_ext(certificate, extension, -1) == 1);
    X509_EXTENSION_free(extension);
}

void addName(X509_NAME* subject, const std::string& name) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(name.c_str());
    require(X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_ASC, bytes, -1, -1, 0) == 1);
}

}  // namespace

TestCertificate::TestCertificate(const std::string& name, const TestCertificate* issuer, int days)
    : m_key(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256")), m_certificate(X509_new()) {
    X509* made = m_certificate.get();
    require(m_key && made != nullptr);
    X509_set_version(made, 2);
    static long s_serial = 1;
    ASN1_INTEGER_set(X509_get_serialNumber(made), ++s_serial);
    X509_gmtime_adj(X509_getm_notBefore(made), (days < 0 ? days : -1) * SECONDS_PER_DAY);
    X509_gmtime_adj(X509_getm_notAfter(made), (days < 0 ? days + 1 : days) * SECONDS_PER_DAY);
    addName(X509_get_subject_name(made), name);
    const TestCertificate& signer = issuer == nullptr ? *this : *issuer;
    X509_set_issuer_name(made, X509_get_subject_name(signer.certificate()));
    X509_set_pubkey(made, m_key.get());
    if (issuer == nullptr) {
        addExtension(made, NID_basic_constraints, "critical,CA:TRUE");
    } else {
        addExtension(made, NID_subject_alt_name, "DNS:" + name);
    }
    require(X509_sign(made, signer.key(), EVP_sha256()) > 0);
}

std::string TestCertificate::pem() const {
    BIO* memory = BIO_new(BIO_s_mem());
    require(memory != nullptr && PEM_write_bio_X509(memory, m_certificate.get()) == 1);
    char* bytes = nullptr;
    const long length = BIO_get_mem_data(memory, &bytes);
    std::string text(bytes, static_cast<std::size_t>(length));
    BIO_free(memory);
    return text;
}
