#pragma once  // internal

#include "TorvelPlatform/foundation/RuntimeLibrary.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

namespace torvel {

// OpenSSL is loaded when the first certificate, key or connection comes: binding its names is a third of what
// a process would otherwise do before it knows its configuration. Some of them stand behind its macros.
#define TORVEL_OPENSSL_FUNCTIONS(FUNCTION)     \
    FUNCTION(ASN1_STRING_get0_data)            \
    FUNCTION(ASN1_STRING_length)               \
    FUNCTION(ASN1_TIME_to_tm)                  \
    FUNCTION(BIO_ctrl)                         \
    FUNCTION(BIO_free)                         \
    FUNCTION(BIO_new)                          \
    FUNCTION(BIO_new_mem_buf)                  \
    FUNCTION(BIO_s_mem)                        \
    FUNCTION(CRYPTO_free)                      \
    FUNCTION(CRYPTO_get_ex_new_index)          \
    FUNCTION(ERR_clear_error)                  \
    FUNCTION(ERR_pop_to_mark)                  \
    FUNCTION(ERR_set_mark)                     \
    FUNCTION(EVP_PKEY_CTX_dup)                 \
    FUNCTION(EVP_PKEY_CTX_free)                \
    FUNCTION(EVP_PKEY_CTX_new)                 \
    FUNCTION(EVP_PKEY_CTX_set_rsa_padding)     \
    FUNCTION(EVP_PKEY_encrypt)                 \
    FUNCTION(EVP_PKEY_encrypt_init)            \
    FUNCTION(EVP_PKEY_free)                    \
    FUNCTION(EVP_PKEY_get0_type_name)          \
    FUNCTION(EVP_PKEY_get_bits)                \
    FUNCTION(EVP_PKEY_get_security_bits)       \
    FUNCTION(EVP_PKEY_get_size)                \
    FUNCTION(EVP_PKEY_is_a)                    \
    FUNCTION(GENERAL_NAMES_free)               \
    FUNCTION(OPENSSL_sk_new_null)              \
    FUNCTION(OPENSSL_sk_num)                   \
    FUNCTION(OPENSSL_sk_pop_free)              \
    FUNCTION(OPENSSL_sk_push)                  \
    FUNCTION(OPENSSL_sk_value)                 \
    FUNCTION(PEM_read_bio_PUBKEY)              \
    FUNCTION(PEM_read_bio_X509)                \
    FUNCTION(PEM_write_bio_PUBKEY)             \
    FUNCTION(SHA256)                           \
    FUNCTION(SSL_CTX_ctrl)                     \
    FUNCTION(SSL_CTX_set_cert_verify_callback) \
    FUNCTION(SSL_CTX_set_ex_data)              \
    FUNCTION(SSL_CTX_set_info_callback)        \
    FUNCTION(SSL_CTX_set_options)              \
    FUNCTION(SSL_CTX_set_verify)               \
    FUNCTION(SSL_get0_alpn_selected)           \
    FUNCTION(SSL_get_ex_data)                  \
    FUNCTION(SSL_set_ex_data)                  \
    FUNCTION(X509_NAME_print_ex)               \
    FUNCTION(X509_STORE_CTX_free)              \
    FUNCTION(X509_STORE_CTX_get0_cert)         \
    FUNCTION(X509_STORE_CTX_get0_chain)        \
    FUNCTION(X509_STORE_CTX_get0_param)        \
    FUNCTION(X509_STORE_CTX_get0_untrusted)    \
    FUNCTION(X509_STORE_CTX_get_error)         \
    FUNCTION(X509_STORE_CTX_get_error_depth)   \
    FUNCTION(X509_STORE_CTX_init)              \
    FUNCTION(X509_STORE_CTX_new)               \
    FUNCTION(X509_STORE_CTX_set_default)       \
    FUNCTION(X509_STORE_CTX_set_error)         \
    FUNCTION(X509_STORE_add_cert)              \
    FUNCTION(X509_STORE_free)                  \
    FUNCTION(X509_STORE_load_file)             \
    FUNCTION(X509_STORE_load_path)             \
    FUNCTION(X509_STORE_new)                   \
    FUNCTION(X509_VERIFY_PARAM_set_auth_level) \
    FUNCTION(X509_check_host)                  \
    FUNCTION(X509_check_ip_asc)                \
    FUNCTION(X509_free)                        \
    FUNCTION(X509_get0_notAfter)               \
    FUNCTION(X509_get_default_cert_dir)        \
    FUNCTION(X509_get_default_cert_dir_env)    \
    FUNCTION(X509_get_default_cert_file)       \
    FUNCTION(X509_get_default_cert_file_env)   \
    FUNCTION(X509_get_ext_d2i)                 \
    FUNCTION(X509_get_pubkey)                  \
    FUNCTION(X509_get_subject_name)            \
    FUNCTION(X509_up_ref)                      \
    FUNCTION(X509_verify_cert)                 \
    FUNCTION(X509_verify_cert_error_string)    \
    FUNCTION(d2i_PUBKEY)                       \
    FUNCTION(d2i_X509)                         \
    FUNCTION(i2d_PUBKEY)                       \
    FUNCTION(i2d_X509)
TORVEL_OPENSSL_FUNCTIONS(TORVEL_DECLARE_FUNCTION)

// Comes before any of them but those that take an object of the library's; any thread, any number of times.
void loadOpenSSL();

}  // namespace torvel
