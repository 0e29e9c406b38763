-- A whole document, written by hand: no word adds to it. The files that it names go into the pack as entries.

document "demo.xml"
entry "cube.mesh"
entry "crate.png"
