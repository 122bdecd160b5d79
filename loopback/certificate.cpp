#include "loopback/certificate.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <memory>

namespace loopback {

template<typename Type, void (*release)(Type *)>
struct Releaser
{
    void operator()(Type *object) const { release(object); }
};
using KeyPointer = std::unique_ptr<EVP_PKEY, Releaser<EVP_PKEY, EVP_PKEY_free>>;
using CertificatePointer = std::unique_ptr<X509, Releaser<X509, X509_free>>;
using ExtensionPointer = std::unique_ptr<X509_EXTENSION, Releaser<X509_EXTENSION, X509_EXTENSION_free>>;
using BufferPointer = std::unique_ptr<BIO, Releaser<BIO, BIO_free_all>>;

namespace {

void require(bool done)
{
    if (!done)
        qFatal("libcrypto made no certificate");
}

void addExtension(X509 *certificate, X509 *issuer, int kind, const QByteArray &value)
{
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const ExtensionPointer extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value.constData()));
    require(extension && X509_add_ext(certificate, extension.get(), -1) == 1);
}

/// A random number, since clients take two certificates of one issuer and one number for the same.
void setSerialNumber(X509 *certificate)
{
    quint32 number = 0;
    require(RAND_bytes(reinterpret_cast<unsigned char *>(&number), sizeof number) == 1);
    require(ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), quint64(number) + 1) == 1);
}

QByteArray contents(BIO *buffer)
{
    char *data = nullptr;
    const long size = BIO_get_mem_data(buffer, &data);
    return {data, qsizetype(size)};
}

} // namespace

struct Issued::Parts
{
    KeyPointer key;
    CertificatePointer certificate;
};

Issued::Issued(const QByteArray &host, const Issued *issuer, const Validity &validity)
    : parts(new Parts{.key = KeyPointer(EVP_EC_gen("P-256")), .certificate = CertificatePointer(X509_new())})
{
    X509 *certificate = parts->certificate.get();
    require(parts->key && certificate != nullptr);
    X509 *signer = issuer != nullptr ? issuer->parts->certificate.get() : certificate;
    EVP_PKEY *signingKey = issuer != nullptr ? issuer->parts->key.get() : parts->key.get();

    require(X509_set_version(certificate, X509_VERSION_3) == 1);
    setSerialNumber(certificate);
    require(ASN1_TIME_set(X509_getm_notBefore(certificate), validity.from.toSecsSinceEpoch()) != nullptr);
    require(ASN1_TIME_set(X509_getm_notAfter(certificate), validity.to.toSecsSinceEpoch()) != nullptr);
    require(X509_set_pubkey(certificate, parts->key.get()) == 1);
    X509_NAME *name = X509_get_subject_name(certificate);
    require(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char *>(host.constData()), int(host.size()), -1,
                                       0) == 1);
    require(X509_set_issuer_name(certificate, X509_get_subject_name(signer)) == 1);
    addExtension(certificate, signer, NID_subject_alt_name, "DNS:" + host);
    // Issuer and holder may bear one name; by the keys they are told apart.
    addExtension(certificate, signer, NID_subject_key_identifier, "hash");
    addExtension(certificate, signer, NID_authority_key_identifier, "keyid");
    if (issuer == nullptr)
        addExtension(certificate, signer, NID_basic_constraints, "critical,CA:TRUE");
    require(X509_sign(certificate, signingKey, EVP_sha256()) > 0);
}

Issued::~Issued() = default;

Certificate Issued::certificate() const
{
    const BufferPointer certificate(BIO_new(BIO_s_mem()));
    const BufferPointer key(BIO_new(BIO_s_mem()));
    require(PEM_write_bio_X509(certificate.get(), parts->certificate.get()) == 1);
    require(PEM_write_bio_PrivateKey(key.get(), parts->key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1);
    return {QSslCertificate(contents(certificate.get())), QSslKey(contents(key.get()), QSsl::Ec)};
}

} // namespace loopback
