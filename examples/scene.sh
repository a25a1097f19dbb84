#!/usr/bin/env bash
# A recogniser as part of a VRML scene: trains one, and writes it as a node behind declarations of its
# node types, so that any VRML 2.0 viewer opens the file.
#
#   scene.sh [FOLDER]        needs vesk in PATH
set -euo pipefail

cd -- "${1-.}"
vesk generate -o strokes.jsonl --users 2 --repetitions 5 --gesture circle --gesture star
vesk train strokes.jsonl -o strokes.model
vesk export strokes.model -o recogniser.wrl --with-prototypes

# A host's own scene refers to it; what the host does with the node is its own business.
cat >scene.wrl <<'SCENE'
#VRML V2.0 utf8

Shape { geometry Text { string [ "Draw a circle or a star" ] } }
Inline { url "recogniser.wrl" }
SCENE
echo "scene.wrl shows a text and takes recogniser.wrl in"
