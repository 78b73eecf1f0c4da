"""json_schemas.py RCTOOL FRAME DOCS: what rctool prints as JSON is as the schemas in DOCS say, and
every field that these describe has a line in the page of the tool."""

import json
import pathlib
import subprocess
import sys
import tempfile
import zlib

import jsonschema

rctool, frame = sys.argv[1:3]
docs = pathlib.Path(sys.argv[3])
schemas = {path.name.split(".")[0]: json.loads(path.read_text())
           for path in (docs / "schema").glob("*.schema.json")}


def run(*arguments, status=(0,)):
    done = subprocess.run([rctool, *arguments], stdout=subprocess.PIPE, check=False)
    assert done.returncode in status, (arguments, done.returncode)
    return done.stdout


def check(name, text):
    validator = jsonschema.Draft7Validator(schemas[name])
    errors = [f"{list(error.path)}: {error.message}"
              for error in validator.iter_errors(json.loads(text))]
    assert not errors, (name, errors)
    seen.add(name)


def rows(properties, required, prefix=""):
    """The lines of the page's tables, field by field."""
    for key, schema in properties.items():
        path = prefix + key + ("[]" if schema.get("type") == "array" else "")
        text = schema.get("description", "")
        if "enum" in schema:
            text += ": " + ", ".join(f"`{value}`" for value in schema["enum"])
        yield f"| `{path}` | {text}{'' if key in required else ' *optional*'} |"
        inner = schema.get("items", schema)
        named = schema.get("additionalProperties")
        if "properties" in inner:
            yield from rows(inner["properties"], inner.get("required", []), path + ".")
        elif isinstance(named, dict) and "properties" in named:
            yield from rows(named["properties"], named["required"], path + ".NAME.")


seen = set()
for schema in schemas.values():
    jsonschema.Draft7Validator.check_schema(schema)
with tempfile.TemporaryDirectory() as folder:
    mixed, other = folder + "/mixed.rcrec", folder + "/other.rcrec"
    part = ["--quiet", "--rectangle", "0,0,64,64", "-o"]
    run("encode", *part, mixed, "--codec", "ict,lbe", frame, frame)
    run("encode", *part, other, "--protocol", "1", "--quality", "1", "--no-checksums", frame)
    for recording in (mixed, other):
        check("info", run("info", "--json", recording))
        check("list", run("list", "--json", recording))
        check("bench", run("bench", "--json", "--passes", "1", recording))
        check("inspect", run("inspect", "--json", "--symbols", recording))
    check("inspect", run("inspect", "--json", "--update", "1", mixed))
    check("compare", run("compare", "--json", mixed, mixed))
    check("compare", run("compare", "--json", mixed, other, status=(4,)))
    check("compare", run("compare", "--json", frame, frame))
    run("export", "--quiet", "-o", folder + "/raw", mixed)
    check("export", pathlib.Path(folder, "raw/index.json").read_text())

    # An update with a fault: its data are noise.
    data = bytearray(pathlib.Path(other).read_bytes())
    begin, body = 40, int.from_bytes(data[44:48], "little")
    data[begin + 8 + 40 + 20:begin + 8 + body] = b"\xff" * (body - 60)
    end = begin + 8 + body
    data[end:end + 4] = zlib.crc32(data[begin:end]).to_bytes(4, "little")
    pathlib.Path(other).write_bytes(data)
    check("inspect", run("inspect", "--json", "--symbols", other, status=(3,)))
    check("info", run("info", "--json", other, status=(3,)))
assert seen == set(schemas), seen

page = (docs / "tool.md").read_text()
for name, schema in schemas.items():
    if name == "export":
        continue  # The page describes it by the difference to list.
    chapter = page[page.index(f"### {schema['title']}\n"):]
    for row in rows(schema["properties"], schema["required"]):
        assert row + "\n" in chapter, row
extra = set(schemas["export"]["properties"]["updates"]["items"]["properties"])
extra -= set(schemas["list"]["properties"]["updates"]["items"]["properties"])
assert extra == {"file"} and "| `updates[].file` |" in page
