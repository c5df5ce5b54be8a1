// What the npm package "gltf-validator" finds wrong with files, for tests: one error a line.
//   node gltfErrors.js PACKAGE FILE...
const fs = require('fs');
const [packagePath, ...files] = process.argv.slice(2);
const validator = require(packagePath);
(async () => {
    for (const file of files) {
        const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), { maxIssues: 10 });
        for (const issue of report.issues.messages.filter((message) => message.severity === 0))
            console.log(`${file}: ${issue.code} ${issue.message} ${issue.pointer ?? ''}`);
    }
})();
