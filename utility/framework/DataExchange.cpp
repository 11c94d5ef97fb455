#include "utility/framework/DataExchange.h"

#include "resources/StringIds.h"
#include "utility/framework/internal/Prompts.h"
#include "utility/framework/internal/ResourceModules.h"
#include "utility/framework/String.h"

#include <boost/format.hpp>

#include <limits>

namespace
{

constexpr UINT warning = 0x30;

template <class Float>
void Validate(CDataExchange& exchange, Float value, Float minimum, Float maximum)
{
    if (!exchange.m_bSaveAndValidate || !(value < minimum || value > maximum))
        return;
    const auto text = [](Float bound)
    {
        CStringW digits;
        digits.Format(L"%.*g", std::numeric_limits<Float>::digits10, static_cast<double>(bound));
        return std::wstring(digits.GetString());
    };
    utility::framework::RefuseWith(exchange,
                                   utility::framework::FrameworkString(utility::resources::EnterNumberInRange),
                                   {text(minimum), text(maximum)});
}

}

CDataExchange::CDataExchange(utility::platform::Form& form, bool saveAndValidate)
    : m_bSaveAndValidate(saveAndValidate), m_form(form)
{
}

CDataExchange::EditControl CDataExchange::PrepareEditCtrl(int id)
{
    if (!m_form.HasField(id))
        throw new CNotSupportedException;
    m_isPrepared = true;
    m_id = id;
    return {m_form, id};
}

void CDataExchange::Fail()
{
    if (m_isPrepared)
        m_form.Focus(m_id);
    throw new CUserException;
}

void CDataExchange::Refuse(const std::wstring& text, UINT style, int helpTopic)
{
    m_form.ShowBox(text.c_str(), style, helpTopic);
    Fail();
}

void DDV_MinMaxFloat(CDataExchange* exchange, const float& value, float minimum, float maximum)
{
    Validate(*exchange, value, minimum, maximum);
}

void DDV_MinMaxDouble(CDataExchange* exchange, const double& value, double minimum, double maximum)
{
    Validate(*exchange, value, minimum, maximum);
}

namespace utility::framework
{

void RefuseWith(CDataExchange& exchange, std::wstring_view text, std::initializer_list<std::wstring> values)
{
    boost::wformat prompt;
    prompt.exceptions(boost::io::no_error_bits);
    prompt.parse(std::wstring(text));
    for (const std::wstring& value : values)
        prompt % value;
    exchange.Refuse(prompt.str(), warning, 0);
}

}
