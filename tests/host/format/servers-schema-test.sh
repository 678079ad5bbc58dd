#!/bin/sh
# servers-schema-test.sh ZELHOST SCHEMA RECORDED DOCUMENT: what `zelhost sensors --servers FILE --format json` writes is as
# its JSON Schema and the document say, and the schema refuses what is not.
set -eu
if ! python3 -c 'import jsonschema' 2>/dev/null; then
    echo "SKIPPED: there is no python3 with jsonschema (Debian package python3-jsonschema)"
    exit 77
fi
python3 - "$@" <<'PYTHON'
import copy
import http.server
import json
import os
import re
import subprocess
import sys
import threading

import jsonschema

zelhost, schema_file, recorded, document_file = sys.argv[1:]
OPERATIONS = {"EnumerateInstances": "instances", "EnumerateInstanceNames": "names", "GetInstance": "get"}


# Answers what is recorded of its scenario.
class Manager(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_POST(self):
        request = self.rfile.read(int(self.headers["Content-Length"]))
        message = re.search(rb'MESSAGE ID="\d+"', request).group(0)
        name = os.path.join(recorded, "sfcb", self.server.scenario, OPERATIONS[self.headers["CIMMethod"]] + ".answer")
        body = open(name, "rb").read().split(b"\r\n\r\n", 1)[1]
        body = re.sub(rb'MESSAGE ID="1001"', message, body)
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *arguments):
        pass


urls = []
for scenario in ("healthy", "odd", "nodriver"):
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Manager)
    server.scenario = scenario
    threading.Thread(target=server.serve_forever, daemon=True).start()
    urls.append("http://127.0.0.1:%d" % server.server_port)
urls.append("http://127.0.0.1:1")
program = subprocess.run([zelhost, "sensors", "--servers", "-", "--format", "json"], input="\n".join(urls),
                         stdout=subprocess.PIPE, universal_newlines=True)
assert program.returncode == 1, program
schema = json.load(open(schema_file))
jsonschema.Draft7Validator.check_schema(schema)
validator = jsonschema.Draft7Validator(schema)
document = json.loads(program.stdout)
validator.validate(document)
servers = document["servers"]
assert [server["server"] for server in servers] == urls, servers
assert [len(server["sensors"]) for server in servers] == [14, 4, 0, 0], servers
assert servers[2]["status"]["rc"] == 16 and servers[3]["status"] is None, servers


def refused(change):
    broken = copy.deepcopy(document)
    change(broken)
    return not validator.is_valid(broken)


for place in ([], ["servers", 0], ["servers", 0, "status"], ["servers", 0, "sensors", 0]):
    def inside(whole):
        for step in place:
            whole = whole[step]
        return whole
    assert refused(lambda d: inside(d).update(more=1)), place
    for key in inside(document):
        assert refused(lambda d: inside(d).pop(key)), (place, key)
assert refused(lambda d: d["servers"][0].update(status=None))
assert refused(lambda d: d["servers"][0].update(worst=1))

chapter = open(document_file).read().split("## zelhost sensors --servers\n", 1)[1].split("\n## ", 1)[0]
listed = re.findall(r"^\| `([^`]+)` \|", chapter, re.M)
written = list(document) + ["servers[]." + key for key in servers[0]]
assert listed == written, (listed, written)
PYTHON
