// Usage: node png2icons.js OUT.icns SOURCE.png
// png2icons scales its one source to every size it writes. Nearest neighbour
// and no colour reduction, so a source built for it gives exact elements.
'use strict';
const fs = require('fs');
const png2icons = require('png2icons');

const [out, source] = process.argv.slice(2);
const icns = png2icons.createICNS(fs.readFileSync(source), png2icons.NEAREST_NEIGHBOR, 0);
if (!icns) {
  console.error('png2icons: no .icns made from ' + source);
  process.exit(1);
}
fs.writeFileSync(out, icns);
