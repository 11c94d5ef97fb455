#include "utility/guards/EventSetter.h"

#include "utility/platform/Events.h"

CEventSetter::CEventSetter(void* event) noexcept : m_hEvent(event) {}

CEventSetter::~CEventSetter() { utility::platform::Events().Set(m_hEvent); }
