#pragma once
// Table-driven checks: one check run per row of a table, each under a trace
// that names the row, so that a failure says which row failed and a failed
// assertion ends only its own row.

#include <gtest/gtest.h>

#include <vector>

template <class Row, class Check>
void forEachRow(const std::vector<Row>& rows, Check check)
{
    for (const Row& row : rows) {
        SCOPED_TRACE(row.rowName);
        check(row);
    }
}
