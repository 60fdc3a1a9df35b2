#ifndef DATA_AREA_WALK_H
#define DATA_AREA_WALK_H

#include "data/area_index.h"
#include "data/data_image.h"

/// A walk over the records of consecutive addresses in the driver's image. The first record is looked up. Each other one
/// is taken from where the index expects it behind the last one, if it has the keys, and else looked up, too. Inline,
/// because every word of every reply passes here.
class AreaWalk {
public:
    /// `regType` is a word type, and must outlive the walk.
    AreaWalk(qint32 requestTag, const QString &regType)
        : m_requestTag(requestTag), m_regType(regType), m_index(0), m_next(nullptr)
    {
    }

    /// Goes to the record at `address`, which is appended if it is missing. Appending may move all records.
    _DATA_ &to(qint32 address)
    {
        if (m_next != nullptr) {
            const qint32 next = m_next[m_index];
            _DATA_ &area = at(next);
            if (hasKeys(area, m_requestTag, m_regType, address)) {
                m_index = next;
                return area;
            }
        }
        m_index = findOrAppendArea(m_requestTag, m_regType, address, driver.dataAreas);
        enterAreas(driver.dataAreas); // that record, too, if it was appended
        lookAnew();
        return at(m_index);
    }

    /// Reports the change of the word at `address`, to which the walk went last. Returns its record, which may be elsewhere
    /// now, since a callback may have appended others.
    _DATA_ &report(qint32 before, qint32 after, ReportKeys &keys, qint32 address)
    {
        _DATA_ &area = reportChange(m_index, before, after, keys, address);
        lookAnew();
        return area;
    }

private:
    _DATA_ &at(qint32 index) const { return *(m_records + index); }

    void lookAnew()
    {
        m_records = driver.dataAreas.begin();
        m_next = nextAreas();
    }

    qint32                  m_requestTag;
    const QString          &m_regType;
    qint32                  m_index;
    QList<_DATA_>::iterator m_records;
    const qint32           *m_next; // null before the first record
};

#endif
