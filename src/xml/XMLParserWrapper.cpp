#include "vnbytstr/XMLParserWrapper.h"

CXMLParserWrapper::~CXMLParserWrapper() = default;
