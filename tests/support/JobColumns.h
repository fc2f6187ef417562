// A host's column set for the tests of column sets, core and Qt: the columns of a job table.
#pragma once

#include <array>

#include "quoddle/interface/ColumnProtocol.h"
#include "quoddle/interface/UserInterfaceItemIdentifier.h"
#include "quoddle/runtime/Localize.h"

namespace quod::testing {

enum class JobColumn { status, name, scheduled };

struct JobColumns : ColumnProtocol<JobColumns, JobColumn> {
    static constexpr std::array entries{
        ColumnEntry<JobColumn>{JobColumn::status, &UserInterfaceItemIdentifier::Column::status,
                               &Localize::status},
        ColumnEntry<JobColumn>{JobColumn::name, &UserInterfaceItemIdentifier::Column::name,
                               &Localize::name},
        ColumnEntry<JobColumn>{JobColumn::scheduled,
                               &UserInterfaceItemIdentifier::Column::scheduled,
                               &Localize::scheduled}};
};

}  // namespace quod::testing
