#!/usr/bin/env python3
"""The plain program a person would write to store studies with Python's sqlite3 module.

Reads every row of one company from SOURCE (a study database the loader saved it in) and writes
it COUNT times into TARGET (an empty study database) as new companies: WAL, synchronous=FULL,
foreign keys, one savepoint per study inside one transaction per batch of 50 studies, each table's
rows by executemany. Series rows take their keys in the new study's key block, as the loader's
rows do. Prints the studies written per second.
"""
import sqlite3
import sys
import time

KEY_BLOCK = 65536
BATCH = 50


def main(source, company_id, target, count):
    src = sqlite3.connect(source)
    tables = {}
    for (name,) in src.execute(
            "select name from sqlite_master where type = 'table' and name not like 'sqlite%'"):
        info = list(src.execute(f'pragma table_info("{name}")'))
        columns = [row[1] for row in info]
        if "CompanyID" not in columns:
            continue
        key = next((row[1] for row in info if row[5] == 1), None)
        if name == "Company":
            columns = [c for c in columns if c != "CompanyID"]
        quoted = ",".join(f'"{c}"' for c in columns)
        rows = src.execute(f'select {quoted} from "{name}" where CompanyID = ? order by 1',
                           (company_id,)).fetchall()
        if rows:
            tables[name] = (columns, key, rows)
    src.close()

    db = sqlite3.connect(target, isolation_level=None)
    for pragma in ("journal_mode = WAL", "synchronous = FULL", "foreign_keys = ON",
                   "temp_store = MEMORY", "cache_size = -2048"):
        db.execute(f"pragma {pragma}")
    company_columns, _, company_rows = tables.pop("Company")
    symbol = company_columns.index("strSymbol")
    insert = {name: f'insert into "{name}" ({",".join(chr(34) + c + chr(34) for c in cols)}) '
                    f'values ({",".join("?" * len(cols))})'
              for name, (cols, _, _) in tables.items()}
    insert_company = (f'insert into "Company" ({",".join(chr(34) + c + chr(34) for c in company_columns)}) '
                      f'values ({",".join("?" * len(company_columns))})')
    start = time.perf_counter()
    for i in range(count):
        if i % BATCH == 0:
            db.execute("begin")
        db.execute("savepoint study")
        company = list(company_rows[0])
        company[symbol] = f"PY{i}"
        new_id = db.execute(insert_company, company).lastrowid
        for name, (columns, key, rows) in tables.items():
            at = columns.index("CompanyID")
            keyed = key if key != "CompanyID" else None
            k = columns.index(keyed) if keyed else -1
            out = []
            for n, row in enumerate(rows):
                row = list(row)
                row[at] = new_id
                if k >= 0:
                    row[k] = new_id * KEY_BLOCK + n
                out.append(row)
            db.executemany(insert[name], out)
        db.execute("release study")
        if i % BATCH == BATCH - 1 or i == count - 1:
            db.execute("commit")
    seconds = time.perf_counter() - start
    db.close()
    print(f"{count / seconds:.1f}")


if __name__ == "__main__":
    main(sys.argv[1], int(sys.argv[2]), sys.argv[3], int(sys.argv[4]))
