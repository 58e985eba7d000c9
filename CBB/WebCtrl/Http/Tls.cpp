// SPDX-License-Identifier: GPL-2.0-only
#include "CBB/WebCtrl/Http/Tls.h"

#include <mongoose.h>

#if MG_TLS == MG_TLS_MBED

#include <cerrno>
#include <cstring>
#include <mbedtls/error.h>
#include <mbedtls/version.h>

#include "CBB/Util/Owner.h"

namespace {

constexpr size_t kMaxFileBytes = 64 * 1024;

// As the library wants them; empty: no TLS.
std::string g_cert;
std::string g_key;

std::string ErrorText(int error) {
    char text[128];
    mbedtls_strerror(error, text, sizeof(text));
    return text;
}

std::string ReadPem(const std::string& path, std::string* text) {
    const FilePtr file(fopen(path.c_str(), "re"));
    text->resize(kMaxFileBytes);
    const size_t size = file != nullptr ? fread(text->data(), 1, text->size(), file.get()) : 0;
    text->resize(size);
    if (file == nullptr || ferror(file.get()) != 0)
        return path + ": " + strerror(errno);
    // The library takes anything but PEM for the binary form.
    return text->find("-----BEGIN") != std::string::npos ? "" : path + ": it is not PEM";
}

#if MBEDTLS_VERSION_NUMBER >= 0x03000000
int Random(void*, unsigned char* buffer, size_t size) {
    return mg_random(buffer, size) ? 0 : -1;
}
#define WITH_RANDOM , Random, nullptr
#else
#define WITH_RANDOM
// By default the library takes the longest curve that the client knows, P-521, which is five times
// as slow.
constexpr mbedtls_ecp_group_id kCurves[] = {MBEDTLS_ECP_DP_SECP256R1, MBEDTLS_ECP_DP_CURVE25519,
                                            MBEDTLS_ECP_DP_SECP384R1, MBEDTLS_ECP_DP_NONE};
#endif

struct Certificate {
    Certificate() {
        mbedtls_x509_crt_init(&chain);
        mbedtls_pk_init(&key);
    }
    ~Certificate() {
        mbedtls_pk_free(&key);
        mbedtls_x509_crt_free(&chain);
    }
    Certificate(const Certificate&) = delete;
    Certificate& operator=(const Certificate&) = delete;

    mbedtls_x509_crt chain;
    mbedtls_pk_context key;
};

} // namespace

const char* TlsLibrary() {
    return MBEDTLS_VERSION_STRING_FULL;
}

std::string LoadTls(const std::string& certFile, const std::string& keyFile) {
    std::string cert;
    std::string key;
    for (std::string fault : {ReadPem(certFile, &cert), ReadPem(keyFile, &key)})
        if (!fault.empty())
            return fault;
#if MBEDTLS_VERSION_NUMBER >= 0x03000000
    psa_crypto_init();
#endif
    Certificate tried;
    const auto bytes = [](const std::string& text) {
        return reinterpret_cast<const unsigned char*>(text.c_str());
    };
    // The sizes count the NUL that ends a text.
    if (const int error = mbedtls_x509_crt_parse(&tried.chain, bytes(cert), cert.size() + 1))
        return certFile + ": " + ErrorText(error);
    if (const int error =
            mbedtls_pk_parse_key(&tried.key, bytes(key), key.size() + 1, nullptr, 0 WITH_RANDOM))
        return keyFile + ": " + ErrorText(error);
    if (mbedtls_pk_check_pair(&tried.chain.pk, &tried.key WITH_RANDOM) != 0)
        return keyFile + ": it is not the key of the certificate in " + certFile;
    g_cert = std::move(cert);
    g_key = std::move(key);
    return {};
}

void BeginTls(mg_connection* connection) {
    if (g_cert.empty())
        return;
    mg_tls_opts options{};
    options.cert = mg_str_n(g_cert.data(), g_cert.size());
    options.key = mg_str_n(g_key.data(), g_key.size());
    mg_tls_init(connection, &options);
    auto* tls = static_cast<mg_tls*>(connection->tls);
    if (tls == nullptr) {
        connection->is_closing = 1; // out of memory: never go on in clear
        return;
    }
#if MBEDTLS_VERSION_NUMBER < 0x03000000
    mbedtls_ssl_conf_curves(&tls->conf, kCurves);
    mbedtls_ssl_conf_min_version(&tls->conf, MBEDTLS_SSL_MAJOR_VERSION_3,
                                 MBEDTLS_SSL_MINOR_VERSION_3);
#endif
}

void EndTls(mg_connection* connection) {
    if (connection->is_tls && !connection->is_tls_hs)
        mbedtls_ssl_close_notify(&static_cast<mg_tls*>(connection->tls)->ssl);
}

#else

const char* TlsLibrary() {
    return "none";
}

std::string LoadTls(const std::string&, const std::string&) {
    return "this build has no TLS";
}

void BeginTls(mg_connection*) {}

void EndTls(mg_connection*) {}

#endif
