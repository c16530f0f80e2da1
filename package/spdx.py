"""spdx.py FOLDER VERSION TIME: adds the SPDX document TesselSLB.spdx.json to a package.

The document (SPDX 2.3) lists our files, and the libraries that are linked statically. TIME, in seconds since 1970,
is the time of the document.
"""

import hashlib
import json
import subprocess
import sys
import time
from pathlib import Path

from archive import checksum, files_of
from licenses import LIBRARIES

DLLS = ["bin/TesselSLB_x64.dll", "bin/TesselSLB_c.dll"]
TOOLS = ["bin/SceneBroker.exe", "bin/tessel.exe"]


def debian_version(package):
    command = ["dpkg-query", "--show", "--showformat=${Version}", package]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def spdx_id(kind, name):
    return f"SPDXRef-{kind}-" + "".join(c if c.isalnum() or c in ".-" else "-" for c in name)


def file_entry(folder, path):
    name = path.relative_to(folder).as_posix()
    return {
        "fileName": "./" + name,
        "SPDXID": spdx_id("File", name),
        "checksums": [{"algorithm": a.upper(), "checksumValue": checksum(path, a)} for a in ("sha1", "sha256")],
        "licenseConcluded": "NOASSERTION",
        "licenseInfoInFiles": ["NOASSERTION"],
        "copyrightText": "NOASSERTION",
    }


def package_entry(name, version, licence, **more):
    return {
        "name": name,
        "SPDXID": spdx_id("Package", name),
        "versionInfo": version,
        "downloadLocation": "NOASSERTION",
        "licenseConcluded": licence,
        "licenseDeclared": licence,
        "copyrightText": "NOASSERTION",
        **more,
    }


def library_entry(library):
    return package_entry(library.name, debian_version(library.package), library.licence, filesAnalyzed=False,
                         comment=f"from the Debian package {library.package}")


def relationship(element, kind, related):
    return {"spdxElementId": element, "relationshipType": kind, "relatedSpdxElement": related}


def relationships(files):
    # The .tgz files are npm packages, which contain the DLLs.
    packages = [file["fileName"][2:] for file in files if file["fileName"].endswith(".tgz")]
    ours = spdx_id("Package", "TesselSLB")
    result = [relationship("SPDXRef-DOCUMENT", "DESCRIBES", ours)]
    result += [relationship(ours, "CONTAINS", file["SPDXID"]) for file in files]
    for library in LIBRARIES:
        users = DLLS + packages + TOOLS if library.in_dlls else TOOLS
        result += [relationship(spdx_id("File", user), "STATIC_LINK", spdx_id("Package", library.name))
                   for user in users]
    return result


def verification_code(files):
    """Returns the code that SPDX defines: the SHA-1 of the sorted SHA-1 sums of all files."""
    sums = sorted(file["checksums"][0]["checksumValue"] for file in files)
    return hashlib.sha1("".join(sums).encode()).hexdigest()


def document(folder, version, seconds):
    files = [file_entry(folder, path) for path in files_of(folder)]
    code = verification_code(files)
    ours = package_entry("TesselSLB", version, "NOASSERTION", filesAnalyzed=True,
                         licenseInfoFromFiles=["NOASSERTION"],
                         packageVerificationCode={
                             "packageVerificationCodeValue": code,
                             "packageVerificationCodeExcludedFiles": ["./TesselSLB.spdx.json", "./SHA256SUMS"],
                         })
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": folder.name,
        "documentNamespace": f"https://tessel.example/spdx/{folder.name}-{code}",
        "creationInfo": {
            "created": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(seconds)),
            "creators": ["Tool: TesselSLB-package.sh"],
        },
        "packages": [ours, *map(library_entry, LIBRARIES)],
        "files": files,
        "relationships": relationships(files),
        "hasExtractedLicensingInfos": [{
            "licenseId": "LicenseRef-mingw-w64",
            "name": "the licences of the mingw-w64 runtime",
            "extractedText": (folder / "licenses" / "mingw-w64.txt").read_text(encoding="utf-8"),
        }],
    }


if __name__ == "__main__":
    target = Path(sys.argv[1])
    text = json.dumps(document(target, sys.argv[2], int(sys.argv[3])), indent=1)
    (target / "TesselSLB.spdx.json").write_text(text + "\n", encoding="utf-8")
