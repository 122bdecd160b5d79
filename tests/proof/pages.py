"""The report, opened by a browser and by a reader of PDF files."""

import base64
import json
import os
import shutil
import subprocess
import tempfile
from html.parser import HTMLParser

# A page of a report is not to take longer, however busy the machine.
SECONDS = '120'


class Markup(HTMLParser):
    """What in a page would act or fetch, and its text."""

    ACTIVE = {'script', 'iframe', 'object', 'embed', 'link', 'base', 'form', 'audio', 'video', 'foreignobject'}

    def __init__(self):
        super().__init__()
        self.flaws = []
        self.words = []
        self.targets = set()
        self.links = set()

    def handle_starttag(self, tag, attrs):
        if tag in self.ACTIVE:
            self.flaws.append(f'an element {tag}')
        for name, value in attrs:
            value = value or ''
            if name.startswith('on'):
                self.flaws.append(f'an attribute {name}')
            if name == 'id':
                self.targets.add(value)
            if name in ('href', 'xlink:href', 'src', 'action', 'srcset', 'poster', 'data'):
                if value.startswith('#'):
                    self.links.add(value[1:])
                elif not value.startswith('data:image/') and not (name == 'href' and value.startswith('https://doi.org/')
                                                                 or value.startswith('https://arxiv.org/')):
                    self.flaws.append(f'a reference {name}={value[:80]}')

    def handle_data(self, data):
        self.words.append(data)


class Browser:
    """Headless Chromium, spoken to by its protocol over a pipe."""

    def __init__(self, profile):
        to_read, self.to = os.pipe()
        self.back, to_write = os.pipe()
        options = ['--headless', '--no-sandbox', '--disable-gpu', '--disable-background-networking', '--no-first-run',
                   '--disable-component-update', '--disable-sync', '--disable-extensions', '--disable-dev-shm-usage',
                   '--host-resolver-rules=MAP * ~NOTFOUND', f'--user-data-dir={profile}', '--remote-debugging-pipe']
        self.process = subprocess.Popen(
            ['bash', '-c', f'exec timeout {SECONDS} "$@" 3<&{to_read} 4>&{to_write}', 'bash', 'chromium', *options],
            pass_fds=(to_read, to_write), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_read)
        os.close(to_write)
        self.buffer = b''
        self.count = 0
        self.events = []
        self.session = None

    def receive(self):
        while b'\0' not in self.buffer:
            piece = os.read(self.back, 65536)
            if not piece:
                raise RuntimeError('Chromium ended')
            self.buffer += piece
        message, self.buffer = self.buffer.split(b'\0', 1)
        return json.loads(message)

    def call(self, method, **parameters):
        self.count += 1
        request = dict(id=self.count, method=method, params=parameters)
        if self.session:
            request['sessionId'] = self.session
        os.write(self.to, json.dumps(request).encode() + b'\0')
        while (message := self.receive()).get('id') != self.count:
            self.events.append(message)
        if 'error' in message:
            raise RuntimeError(f'{method}: {message["error"]}')
        return message['result']

    def wait_for(self, method):
        while not any(event.get('method') == method for event in self.events):
            self.events.append(self.receive())

    def open(self, url):
        target = self.call('Target.createTarget', url='about:blank')['targetId']
        self.session = self.call('Target.attachToTarget', targetId=target, flatten=True)['sessionId']
        for domain in ('Network', 'Log', 'Runtime', 'Page'):
            self.call(f'{domain}.enable')
        self.events.clear()
        self.call('Page.navigate', url=url)
        self.wait_for('Page.loadEventFired')

    def picture(self, path, scheme):
        self.call('Emulation.setEmulatedMedia', features=[dict(name='prefers-color-scheme', value=scheme)])
        size = self.call('Page.getLayoutMetrics')['cssContentSize']
        clip = dict(x=0, y=0, width=size['width'], height=min(size['height'], 8000), scale=1)
        data = self.call('Page.captureScreenshot', format='png', captureBeyondViewport=True, clip=clip)['data']
        path.write_bytes(base64.b64decode(data))

    def close(self):
        # The protocol's own end.
        try:
            self.session = None
            self.call('Browser.close')
        except (RuntimeError, OSError):
            pass
        self.process.wait()


def in_browser(page, output):
    """What the page asks for or says beside itself."""
    flaws = []
    with tempfile.TemporaryDirectory() as profile:
        browser = Browser(profile)
        try:
            browser.open(page.as_uri())
            for scheme in ('light', 'dark'):
                browser.picture(output / f'report-{scheme}.png', scheme)
            for event in browser.events:
                parameters = event.get('params', {})
                if event.get('method') == 'Network.requestWillBeSent':
                    url = parameters['request']['url']
                    if url != page.as_uri() and not url.startswith('data:'):
                        flaws.append(f'it requests {url[:120]}')
                if event.get('method') == 'Log.entryAdded':
                    flaws.append(f'the console says: {parameters["entry"]["text"][:200]}')
                if event.get('method') in ('Runtime.consoleAPICalled', 'Runtime.exceptionThrown'):
                    flaws.append(f'a script runs: {str(parameters)[:200]}')
                if event.get('method') == 'Page.javascriptDialogOpening':
                    flaws.append(f'a dialog opens: {parameters["message"][:80]}')
        finally:
            browser.close()
    return flaws


def in_markup(page):
    markup = Markup()
    text = page.read_text(encoding='utf-8')
    markup.feed(text)
    flaws = list(dict.fromkeys(markup.flaws))
    if 'Content-Security-Policy' not in text:
        flaws.append('it has no policy')
    if 'simulated' not in ''.join(markup.words):
        flaws.append('it does not say that the answers are simulated')
    flaws += [f'a link to #{link}, which is nowhere' for link in sorted(markup.links - markup.targets)]
    return flaws


def in_pdf(pages):
    text = subprocess.run(['pdftotext', '-layout', pages, '-'], check=True, capture_output=True, text=True).stdout
    plain = ' '.join(text.split())
    wanted = ['simulated', 'Which hot drink do you like best', 'How many cups a day', 'Panel Member']
    return [f'the PDF has no "{words}"' for words in wanted if words not in plain]


def check(project, humans, options):
    made = {}
    for form in ('html', 'pdf'):
        made[form] = options.output / f'report.{form}'
        made[form].unlink(missing_ok=True)
        run = subprocess.run([options.study, 'report', project, '--out', made[form]], capture_output=True, text=True)
        if run.returncode != 0:
            return [f'{form}: exit status {run.returncode}: {run.stderr.strip()}']
    beside = options.output / 'against.html'
    beside.unlink(missing_ok=True)
    run = subprocess.run([options.study, 'report', project, '--against', humans, '--out', beside], capture_output=True,
                         text=True)
    failures = [] if run.returncode == 0 else [f'--against: exit status {run.returncode}: {run.stderr.strip()}']
    failures += in_markup(made['html']) + in_pdf(made['pdf'])
    if shutil.which('chromium'):
        return failures + in_browser(made['html'], options.output)
    return failures + ['Chromium is missing']
