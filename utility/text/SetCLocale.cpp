#include "utility/text/SetCLocale.h"

#include "utility/platform/Locale.h"

using utility::platform::Locale;

CSetCLocale::CSetCLocale() : m_earlier(Locale().UseCLocale()) {}

CSetCLocale::CSetCLocale(const CSetCLocale& other) = default;

CSetCLocale& CSetCLocale::operator=(const CSetCLocale& other) = default;

CSetCLocale::~CSetCLocale() { Locale().UseRuntimeLocale(m_earlier); }
