// SPDX-License-Identifier: MIT
// What a library on another machine answers to a query, whole and in pieces. The first byte is the size of a piece, and
// whether the answer is CSV or JSON.
#include "FuzzSupport.h"
#include "ResultReader.h"

namespace {
struct Answer
{
    std::vector<QByteArray> names;
    std::vector<RemoteRow> rows;
    bool isGood = false;
};

Answer read(const QByteArray &bytes, const char *type, qsizetype piece)
{
    RemoteLimits limits;
    limits.columns = 10;
    limits.rowBytes = 1024;
    const std::unique_ptr<ResultReader> reader = ResultReader::forType(type, limits);
    Answer answer;
    QString error;
    for (qsizetype at = 0; at < bytes.size() && error.isEmpty(); at += piece) {
        error = reader->take(bytes.mid(at, piece));
        for (RemoteRow &row : reader->takeRows()) {
            Fuzz::require(row.size() == reader->names().size() && row.size() <= 10);
            answer.rows.push_back(std::move(row));
        }
    }
    answer.isGood = error.isEmpty() && reader->finish().isEmpty();
    for (RemoteRow &row : reader->takeRows())
        answer.rows.push_back(std::move(row));
    answer.names = reader->names();
    return answer;
}
} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    const char *const type = data[0] & 1 ? "text/csv" : "application/sparql-results+json";
    const QByteArray bytes = Fuzz::bytes(data + 1, size - 1);
    const Answer pieces = read(bytes, type, 1 + data[0] / 2);
    // How an answer is cut on its way makes no difference.
    const Answer bytewise = read(bytes, type, 1);
    Fuzz::require(pieces.isGood == bytewise.isGood);
    Fuzz::require(pieces.names == bytewise.names);
    Fuzz::require(pieces.rows == bytewise.rows);
    return 0;
}
