// Everything of the library that needs no window.
#pragma once

#include "vnbytstr/BidiText.h"
#include "vnbytstr/ByteStore.h"
#include "vnbytstr/ByteStream.h"
#include "vnbytstr/CacheException.h"
#include "vnbytstr/CryptoException.h"
#include "vnbytstr/DES.h"
#include "vnbytstr/DiffieHellman.h"
#include "vnbytstr/FixedBinary.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/MultibyteText.h"
#include "vnbytstr/OutputStreamWriter.h"
#include "vnbytstr/StringPersistence.h"
#include "vnbytstr/TempFileName.h"
#include "vnbytstr/TextEncoding.h"
