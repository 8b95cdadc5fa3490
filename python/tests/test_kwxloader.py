"""The Python module against real database files and the sample studies."""
import datetime
import json
import os
import pathlib
import re
import shutil
import subprocess

import pytest

import kwxloader

SOURCE = pathlib.Path(os.environ.get("KWX_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
SAMPLES = SOURCE / "samples" / "studies"


@pytest.fixture
def db(tmp_path):
    return kwxloader.Database.create(str(tmp_path / "studies.db"))


def iso(value):
    """A study with its dates as the ISO texts of `kwx show --json`."""
    if isinstance(value, dict):
        return {k: iso(v) for k, v in value.items()}
    if isinstance(value, list):
        return [iso(v) for v in value]
    if isinstance(value, datetime.date):
        return value.isoformat()
    return value


def test_import_get_list_and_delete(db):
    company_id = db.import_file(str(SAMPLES / "BWP.kwx"))
    study = db.get(company_id)
    assert study["CompanyID"] == company_id
    assert study["strSymbol"] == "BWP"
    assert isinstance(study["datLastFY"], datetime.date)
    assert db.get("bwp", study["ExchangeID"]) == study
    assert db.yearly(company_id) == study["Yearly"]
    assert db.pert(company_id) == study["JudgmentPERT"]
    assert [(s["CompanyID"], s["strSymbol"]) for s in db.list()] == [(company_id, "BWP")]
    # A second import of the same study refreshes it in place.
    assert db.import_file(str(SAMPLES / "BWP.ssg")) == company_id
    assert len(db.list()) == 1
    db.delete(company_id)
    assert db.list() == []
    with pytest.raises(KeyError):
        db.get(company_id)


def test_a_study_has_exactly_the_shape_of_kwx_show_json(db, tmp_path):
    command = os.environ.get("KWX_COMMAND")
    if not command:
        pytest.skip("KWX_COMMAND names no kwx program")
    company_id = db.import_file(str(SAMPLES / "CPLM.kwx"))
    shown = subprocess.run([command, "--db", db.path, "show", str(company_id), "--json"],
                           check=True, capture_output=True, text=True).stdout
    assert iso(db.get(company_id)) == json.loads(shown)


def test_save_writes_a_changed_study_back_and_adds_a_new_one(db):
    company_id = db.import_file(str(SAMPLES / "BWP.kwx"))
    study = db.get(company_id)
    study["strName"] = "Renamed"
    study["datDataUpdated"] = datetime.date(2024, 6, 30)
    study["JudgmentPERT"] = study["JudgmentPERT"][:1]
    assert db.save(study) == company_id
    saved = db.get(company_id)
    assert saved["strName"] == "Renamed"
    assert saved["datDataUpdated"] == datetime.date(2024, 6, 30)
    assert len(saved["JudgmentPERT"]) == 1
    assert iso(saved) == iso(study)
    del study["CompanyID"]
    assert db.save(study) not in (0, company_id)
    assert len(db.list()) == 2


def test_read_and_export_give_back_the_saved_study(db, tmp_path):
    company_id = db.import_file(str(SAMPLES / "BWP.kwx"))
    out = tmp_path / "out.kwx"
    db.export(company_id, str(out))
    read = kwxloader.read(str(out))
    saved = db.get(company_id)
    assert read["strSymbol"] == saved["strSymbol"]
    assert [row["Sales"] for row in read["Yearly"]] == [row["Sales"] for row in saved["Yearly"]]
    assert kwxloader.read(str(SAMPLES / "BWP.ssg"), format="ssg")["strSymbol"] == "BWP"


def test_errors_say_why(db, tmp_path):
    ssg_named_kwx = tmp_path / "study.kwx"
    shutil.copy(SAMPLES / "BWP.ssg", ssg_named_kwx)
    cases = [
        (lambda: kwxloader.read(str(tmp_path / "none.kwx")), FileNotFoundError, "no such file"),
        (lambda: kwxloader.read(str(ssg_named_kwx)), ValueError, "does not have the KWX layout"),
        (lambda: kwxloader.read(str(SAMPLES / "BWP.kwx"), format="csv"), ValueError, "'csv'"),
        (lambda: db.import_file(str(ssg_named_kwx)), ValueError, "KWX layout"),
        (lambda: kwxloader.Database(str(tmp_path / "none.db")), FileNotFoundError, "none.db"),
        (lambda: kwxloader.Database.create(db.path), FileExistsError, "exists"),
        (lambda: db.get(4242), KeyError, "4242"),
        (lambda: db.get("NONE", "NYSE"), KeyError, "NONE on NYSE"),
        (lambda: db.delete(4242), KeyError, "4242"),
        (lambda: db.save({"strName": "x", "noSuchField": 1}), ValueError, "noSuchField"),
        (lambda: db.save({"datLastFY": "June"}), ValueError, "datLastFY"),
    ]
    for call, error, text in cases:
        with pytest.raises(error, match=re.escape(text)):
            call()
    assert db.list() == []
    with kwxloader.Database(db.path) as again:
        assert again.list() == []
    with pytest.raises(ValueError, match="closed"):
        again.list()


def test_readme_python_example_runs(tmp_path, monkeypatch, capsys):
    readme = (SOURCE / "README.md").read_text()
    example = re.search(r"<!-- example: python -->\n```python\n(.*?)```", readme, re.S).group(1)
    shutil.copy(SAMPLES / "BWP.kwx", tmp_path)
    monkeypatch.chdir(tmp_path)
    exec(compile(example, "README.md", "exec"), {})
    assert "BWP" in capsys.readouterr().out
