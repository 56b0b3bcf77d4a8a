#!/usr/bin/python3
"""What axe-core finds on the page of a session and on the console, light and dark, wide and on a phone: nothing, or the exit status is 1.

    npm install --prefix build/axe axe-core
    KRX_AGENT_SIM=build/release/bin/krx-agent-sim tests/page/axe.py build/axe/node_modules/axe-core/axe.min.js
"""
import itertools
import pathlib
import sys

import browser
from live import Live, wait_until
from session import EXAMPLES, Workspace

AXE = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8")
found = 0

with browser.start() as page, Workspace() as workspace, Live() as live:
    page.set_script_timeout(300)
    path, _ = workspace.replay(EXAMPLES / "enterprise-refuses.scenario")
    for colours, width, address in itertools.product(("light", "dark"), (1280, 375), (f"file://{path}#t=5", live.url)):
        page.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": colours}]})
        page.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {"width": width, "height": 812, "deviceScaleFactor": 1, "mobile": width < 800})
        page.get("about:blank")
        page.get(address)
        wait_until(lambda: page.execute_script("return !page.isLive || $('link').textContent === 'live'"))
        page.execute_script("document.querySelectorAll('details').forEach(one => { one.open = true; })")
        page.execute_script(AXE)
        result = page.execute_async_script("axe.run().then(arguments[0])")
        for violation in result["violations"]:
            for node in violation["nodes"]:
                found += 1
                print(f"{violation['id']}: {violation['help']}: {node['html'][:160]}")
        print(f"{address} at {width}, {colours}: {len(result['passes'])} rules passed, {len(result['violations'])} violated, "
              f"{len(result['incomplete'])} to be looked at ({', '.join(one['id'] for one in result['incomplete'])})", flush=True)
    page.get("about:blank")
sys.exit(found > 0)
