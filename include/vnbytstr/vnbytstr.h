// Everything of the library that needs no window.
#pragma once

#include "vnbytstr/ByteStore.h"
#include "vnbytstr/ByteStream.h"
#include "vnbytstr/CacheException.h"
#include "vnbytstr/CryptoException.h"
#include "vnbytstr/DES.h"
#include "vnbytstr/DiffieHellman.h"
#include "vnbytstr/FixedBinary.h"
#include "vnbytstr/OutputStreamWriter.h"
#include "vnbytstr/TempFileName.h"
