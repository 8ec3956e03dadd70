#include "Views/Components/SectionPage.h"

void SectionPage::setActive(bool isActive)
{
    if (m_isActive == isActive) {
        return;
    }
    m_isActive = isActive;
    Q_EMIT activeChanged(isActive);
}
