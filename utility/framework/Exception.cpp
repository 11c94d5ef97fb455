#include "utility/framework/Exception.h"

CObject::~CObject() = default;

CException::CException() = default;

CException::~CException() = default;

int CException::GetErrorMessage(wchar_t* buffer, unsigned int bufferSize, unsigned int* helpContext)
{
    if (helpContext != nullptr)
        *helpContext = 0;
    if (buffer != nullptr && bufferSize != 0)
        *buffer = L'\0';
    return 0;
}

void CException::Delete() { delete this; }
