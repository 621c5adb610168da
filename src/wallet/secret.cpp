#include "wallet/secret.h"

#include <openssl/crypto.h>

void cleanse_memory(void* memory, std::size_t size) {
    if (memory && size) OPENSSL_cleanse(memory, size);
}
